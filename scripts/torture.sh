#!/usr/bin/env bash
# The long form of the endurance tests: kills at every file call and at 1,000 moments, every file call failing, every allocation and call
# of Windows of every export failing, every combination of damaged files, every length and bit of one, four processes of four threads on
# one store, 10,000 loads and 770,000 calls, every pair of bad arguments. Prints one line for each test; exit 1 when one fails. May take
# many hours.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
. scripts/wine.sh

mkdir -p build
scripts/build.sh >build/build-release.txt 2>&1 || { cat build/build-release.txt; exit 1; }
trap wine_stop EXIT
wine_start || exit 1
export KELUTILS_WINE_STARTED=1 KELUTILS_TORTURE=long
ctest --test-dir build/release --verbose --tests-regex '^(torture_tests|endurance_tests): |^export_tests: damage' >build/torture-output.txt 2>&1
status=$?
sed -n 's/^[0-9]*: torture: //p' build/torture-output.txt
[ $status -eq 0 ] && echo "all passed" || echo "something failed: build/torture-output.txt"
remove_leftovers
exit $status
