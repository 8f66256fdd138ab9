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

echo "== native build and tests"
scripts/build.sh native
(cd build/native && ctest --output-on-failure -j "$(nproc)" --timeout 300)

echo "== Windows build and tests under Wine"
scripts/build.sh win
trap 'scripts/testbed.sh stop build/win' EXIT
scripts/testbed.sh start build/win
(cd build/win && ctest --output-on-failure --timeout 600)

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

echo "all tests passed in $(( $(date +%s) - start )) s"
