#!/usr/bin/env bash
# The long form of the endurance tests, which docs/reliability.md lists; then all tests in their short form with a library that clang
# compiled. Prints one line for each test; exit 1 when one fails. May take many hours.
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
unset KELUTILS_TORTURE
{ scripts/install_dependencies.sh --clang && cmake --preset clang && cmake --build --preset clang &&
  ctest --test-dir build/clang --label-exclude check; } >build/clang-output.txt 2>&1 || { echo "clang failed: build/clang-output.txt"; status=1; }
[ $status -eq 0 ] && echo "all passed" || echo "something failed: build/torture-output.txt"
remove_leftovers
exit $status
