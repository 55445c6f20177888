#!/usr/bin/env bash
# Builds everything and runs the tests: the native programs under the sanitizers, the Windows programs under Wine, and the checks of
# the tree. Ends with the line N passed, N failed. With names of test programs or checks, runs only these.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
. scripts/wine.sh

# step TITLE COMMAND...: runs the command and prints its duration.
step() {
  local start=$SECONDS status=0
  echo "== $1"
  "${@:2}" || status=$?
  echo "== $1: $((SECONDS - start)) seconds"
  return $status
}

only=()
[ $# -eq 0 ] || only=(-R "^($(IFS='|' && echo "$*"))(: .*)?$")
run_tests() { ctest --test-dir "build/$1" --output-on-failure --no-tests=ignore -j "$(nproc)" "${only[@]}" 2>&1 | tee "build/tests-$1.txt"; }

if ! { step "installing and building for Windows" scripts/build.sh &&
  step "building for this machine" eval 'cmake --preset native && cmake --build --preset native'; }; then
  echo "0 passed, 1 failed"
  exit 1
fi
trap wine_stop EXIT
wine_start || exit 1
export KELUTILS_WINE_STARTED=1
step "tests of the portable part" run_tests native
step "tests under Wine, and checks" run_tests release
remove_leftovers

read -r failed all < <(sed -n 's/.* tests passed, \([0-9]*\) tests failed out of \([0-9]*\)$/\1 \2/p' build/tests-{native,release}.txt |
  awk '{ failed += $1; all += $2 } END { print failed + 0, all + 0 }')
[ "$all" -gt 0 ] || { echo "no test has such a name: $*"; failed=1; all=1; }
echo "$((all - failed)) passed, $failed failed"
[ "$failed" -eq 0 ]
