#!/usr/bin/env bash
# Installs what is missing, builds both builds and runs every test: the
# native tests (ASan+UBSan), the same portable tests under Wine, the Windows
# tests and the end-to-end tests of vantr.exe under Wine, a short run of every
# fuzz target over its corpus, and a formatting check.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
start=$(date +%s)
"$root/scripts/deps.sh"

echo "== include order"
scripts/check_layers.sh

echo "== native build and tests"
scripts/build.sh native
(cd build/native && ctest --output-on-failure -j "$(nproc)" --timeout 300) | tee build/native-ctest.log

echo "== Windows build and tests under Wine"
scripts/build.sh win
trap 'scripts/testbed.sh stop build/win' EXIT
scripts/testbed.sh start build/win
# Every device, port and the display the Windows tests need, or a failure here.
scripts/testbed.sh status build/win
(cd build/win && ctest --output-on-failure --timeout 600) | tee build/win-ctest.log

echo "== fuzz targets (${VANTR_FUZZ_SECONDS:-15} s each)"
scripts/build.sh fuzz
for target in build/fuzz/*_fuzz; do
  name=$(basename "$target" _fuzz)
  mkdir -p "fuzz/corpus/$name"
  work=$(mktemp -d)
  "$target" -max_total_time="${VANTR_FUZZ_SECONDS:-15}" -print_final_stats=0 "$work" "fuzz/corpus/$name" \
    >"build/fuzz/$name.log" 2>&1 || { tail -40 "build/fuzz/$name.log"; echo "fuzz target $name failed"; exit 1; }
  rm -rf "$work"
  echo "  $name: ok"
done

echo "== format check"
git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run -Werror

count() { sed -n 's/.*tests passed, \([0-9]*\) tests failed out of \([0-9]*\)/\2 \1/p' "$1" | tail -1; }
read -r native_total native_failed < <(count build/native-ctest.log)
read -r win_total win_failed < <(count build/win-ctest.log)
echo "native: $native_total ctest tests; Windows under Wine: $win_total test programs; fuzz targets: $(ls build/fuzz/*_fuzz | wc -l)"
echo "all tests passed in $(( $(date +%s) - start )) s"
echo "tests: $((native_total + win_total)) passed, $((native_failed + win_failed)) failed"
