#!/usr/bin/env bash
# Runs the built native and Windows tests N times in a row while a second build
# runs beside them (the check that the suite does not depend on the machine's
# load), and prints one line per run. Build first with scripts/test.sh (or
# scripts/build.sh native and win). The ten-minute agenda/as-run test is left
# out unless ALL=1.
#   scripts/repeat_tests.sh [N]
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
runs=${1:-10}
exclude=(-E agenda_asrun)
[ "${ALL:-0}" = 1 ] && exclude=()
stop=$(mktemp)
rm -f "$stop"
# The second build: the whole native tree from nothing, over and over.
(
  while [ ! -e "$stop" ]; do
    rm -rf build/beside
    cmake -S . -B build/beside -G Ninja >/dev/null 2>&1
    cmake --build build/beside -j "$(nproc)" >/dev/null 2>&1
  done
) &
beside=$!
trap 'touch "$stop"; kill $beside 2>/dev/null; wait $beside 2>/dev/null; rm -rf build/beside "$stop"' EXIT
scripts/testbed.sh start build/win >/dev/null
failed=0
for i in $(seq 1 "$runs"); do
  start=$(date +%s)
  (cd build/native && ctest -j "$(nproc)" --timeout 300) >"build/repeat-native-$i.log" 2>&1
  native=$?
  (cd build/win && ctest --output-on-failure --timeout 1200 "${exclude[@]}") >"build/repeat-win-$i.log" 2>&1
  win=$?
  [ $native = 0 ] && [ $win = 0 ] || failed=$((failed + 1))
  echo "run $i: native $([ $native = 0 ] && echo passed || echo FAILED), Windows $([ $win = 0 ] && echo passed || echo FAILED)" \
    "in $(($(date +%s) - start)) s, load $(cut -d' ' -f1 /proc/loadavg)"
done
echo "$((runs - failed)) passed, $failed failed"
[ $failed = 0 ]
