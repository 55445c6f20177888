#!/usr/bin/env bash
# The long form of the endurance tests: kills at every file call and at 1,000 moments, every file call failing, every combination of
# damaged files, every length and bit of one, four processes of four threads on one store, 10,000 loads and calls, every pair of bad
# arguments. Prints one line for each test; exit 1 when one fails. The calls of every export, 770,000, may take two hours, all other
# programs 20 each.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
. scripts/wine.sh

output=build/torture-output.txt
bad=0

# run MINUTES PROGRAM ARGUMENTS...: prints its summary lines; and all that it said when it failed.
run() {
  local minutes=$1 program=build/release/tests/$2
  shift 2
  timeout --kill-after=10 "${minutes}m" "$wine_bin/wine64" "$program" "$@" >"$output" 2>&1
  local status=$?
  sed -n 's/^torture: \(.*\)/\1/p' "$output" | tr -d '\r'
  [ $status -eq 0 ] && return
  bad=1
  cat "$output"
  [ $status -ne 124 ] || echo "$program hung and was ended after $minutes minutes"
}

mkdir -p build
scripts/build.sh >build/build-release.txt 2>&1 || { cat build/build-release.txt; exit 1; }
trap wine_stop EXIT
wine_start || exit 1
export KELUTILS_TORTURE=long
run 20 torture_tests.exe
run 20 export_tests.exe --test-case='damage:*'
run 20 endurance_tests.exe --test-case-exclude='leaks:*'
run 20 endurance_tests.exe --test-case='leaks: loading*'
run 120 endurance_tests.exe --test-case='leaks: calls*'
remove_leftovers
[ $bad -eq 0 ] && echo "all held" || echo "something failed"
exit $bad
