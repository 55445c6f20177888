#!/usr/bin/env bash
# Builds everything, runs the native tests under the sanitizers and the Windows tests under Wine, then the checks of the tree. Ends
# with one line: N passed, N failed. With --fuzz it runs the fuzzers too, for a million inputs each.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
. scripts/wine.sh

limit=300   # seconds for one test program; one that hangs is ended and names its case
passed=0
failed=0

# Counts one test program's cases from its summary line; a program that ends without one counts as one failed case.
count() {
  local name=$1 output=$2 summary
  summary=$(grep -a '^\[doctest\] test cases:' "$output" | tail -n 1)
  if [[ $summary =~ \|[[:space:]]*([0-9]+)\ passed\ \|[[:space:]]*([0-9]+)\ failed ]]; then
    passed=$((passed + BASH_REMATCH[1]))
    failed=$((failed + BASH_REMATCH[2]))
  else
    failed=$((failed + 1))
    echo "$name ended without a summary; its last case: $(cat build/test-progress.txt 2>/dev/null)"
  fi
}

# Runs a test program with a runner in front of it.
run() {
  local name=$1 output
  shift
  output=build/test-output-$name.txt
  rm -f build/test-progress.txt
  echo "== $name"
  KELUTILS_TEST_PROGRESS=build/test-progress.txt timeout --kill-after=10 $limit "$@" >"$output" 2>&1
  local status=$?
  [ $status -eq 0 ] || cat "$output"
  [ $status -ne 124 ] || echo "$name hung and was ended after $limit seconds"
  tail -n 3 "$output" | tr -d '\r' | grep -a 'test cases' || true
  count "$name" "$output"
}

# A step that is not a test program counts as one case.
step() {
  local name=$1
  shift
  echo "== $name"
  if "$@"; then passed=$((passed + 1)); else failed=$((failed + 1)); echo "$name failed"; fi
}

build() {
  scripts/build.sh >build/build-release.txt 2>&1 || { cat build/build-release.txt; return 1; }
  { cmake --preset native && cmake --build --preset native; } >build/build-native.txt 2>&1 || { cat build/build-native.txt; return 1; }
}

# quietly NAME COMMAND...: its output stays in a file unless it fails.
quietly() {
  local output=build/$1-output.txt
  shift
  "$@" >"$output" 2>&1 || { cat "$output"; return 1; }
}

# Runs each fuzzer over the inputs that are kept of it. One without any fails.
replay() {
  local program name
  for program in build/native/fuzz/*_replay; do
    name=$(basename "$program" _replay)
    timeout --kill-after=10 $limit "$program" "fuzz/corpus/$name" || return 1
  done
}

mkdir -p build
echo "== installing and building"
if ! scripts/install_dependencies.sh || ! build; then
  echo "0 passed, 1 failed"
  exit 1
fi

trap wine_stop EXIT
wine_start || exit 1
for program in build/native/tests/*_tests; do run "native-$(basename "$program")" "$program"; done
for program in build/release/tests/*_tests.exe; do run "$(basename "$program" .exe)" "$wine_bin/wine64" "$program"; done
remove_leftovers
step "the kept inputs of the fuzzers" quietly replay replay
step "the demo" quietly demo scripts/demo.sh
step "exports of the DLL" scripts/check_dll.sh
step "hardening of the built files" scripts/check_hardening.sh
step "the public headers" scripts/check_headers.sh
step "the reference of the headers" quietly reference scripts/reference.sh
step "the documents" scripts/check_documents.sh
step "the package, made twice" quietly package scripts/check_package.sh --quick
step "the samples, built with the package" quietly samples scripts/check_samples.sh
if [ "${1:-}" = --fuzz ]; then
  step "the fuzzers" scripts/fuzz.sh 1000000 1800
fi
step "checks of the tree" scripts/check.sh

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
