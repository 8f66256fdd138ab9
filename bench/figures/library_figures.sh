#!/usr/bin/env bash
# The library dialogs' figures with 32 sound devices each way: loads 28 more
# null sinks (each with its monitor) into the test bed's sound server beside
# its four, runs library_figures.exe, and unloads them again.
#   bench/figures/library_figures.sh [BUILD]   (default build/win)
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
build=${1:-$root/build/win}
"$root/scripts/testbed.sh" start "$build" >/dev/null
eval "$("$root/scripts/testbed.sh" env "$build")"
modules=()
for n in $(seq 5 32); do
  modules+=("$(pactl load-module module-null-sink sink_name=extra_$n \
    sink_properties=device.description=Vantorel_Extra_$n rate=44100 channels=2)")
done
trap 'for m in "${modules[@]}"; do pactl unload-module "$m" || true; done' EXIT
"$build/winrun" "$build/bench/figures/library_figures.exe"
