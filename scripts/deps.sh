#!/usr/bin/env bash
# Installs the Debian 12 packages the builds and tests need, only those missing.
set -euo pipefail
packages=(
  cmake ninja-build g++ clang libclang-rt-14-dev clang-format pkg-config
  googletest libbenchmark-dev libsndfile1-dev sox
  g++-mingw-w64-x86-64 binutils-mingw-w64-x86-64
  wine64 wine xvfb xauth pulseaudio pulseaudio-utils socat imagemagick xdotool fonts-wine
  cups-daemon cups-client ghostscript poppler-utils
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "deps: installing ${missing[*]}"
  SUDO=; [ "$(id -u)" = 0 ] || SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
