#!/usr/bin/env bash
# Configures and builds one of the project's build folders.
#   build.sh native   build/native: the portable core and its tests, ASan+UBSan
#   build.sh win      build/win: vantr.exe, vantrctl.exe and the Windows tests
#   build.sh bench    build/bench: optimised, with the benchmarks
#   build.sh fuzz     build/fuzz: the libFuzzer targets (clang)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
kind=${1:?usage: build.sh native|win|bench|fuzz}
jobs=$(nproc)
werror=${VANTR_WERROR:-ON}
case "$kind" in
  native) cmake -S "$root" -B "$root/build/native" -G Ninja -DVANTR_WERROR="$werror" >/dev/null ;;
  win) cmake -S "$root" -B "$root/build/win" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64.cmake" \
         -DVANTR_WERROR="$werror" >/dev/null ;;
  bench) cmake -S "$root" -B "$root/build/bench" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVANTR_SANITIZE=OFF \
           -DVANTR_TESTS=OFF -DVANTR_BENCH=ON >/dev/null ;;
  fuzz) cmake -S "$root/fuzz" -B "$root/build/fuzz" -G Ninja -DCMAKE_CXX_COMPILER=clang++ >/dev/null ;;
  *) echo "build.sh: unknown build '$kind'" >&2; exit 2 ;;
esac
cmake --build "$root/build/$kind" -j "$jobs"
