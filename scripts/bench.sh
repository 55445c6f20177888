#!/usr/bin/env bash
# Builds, and runs the measuring programs under Wine, one after the other. Exit 1 when one misses its limit.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh

scripts/build.sh -DKELUTILS_BUILD_BENCH=ON >/dev/null
wine_start
trap wine_stop EXIT
missed=0
for program in build/release/bench/*_bench.exe; do
  echo "== $(basename "$program" .exe)"
  run_wine "$program" | tr -d '\r' || missed=1
done
rm -rf "$WINEPREFIX"/drive_c/users/*/Temp/kelutils-bench-*   # what a module in use kept the programs from removing
exit $missed
