#!/usr/bin/env bash
# Builds the fuzzers and runs them one after the other, beginning with the inputs kept in fuzz/corpus: COUNT inputs each (10000000 unless
# given), for at most SECONDS (3600 unless given). Prints a line for each; exit 1 when one has a finding, or did not get through its inputs.
#   scripts/fuzz.sh [COUNT [SECONDS]]
# An input that breaks something stays in build/fuzz.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
count=${1:-10000000}
limit=${2:-3600}

mkdir -p build
{ scripts/install_dependencies.sh --fuzz && cmake --preset fuzz && cmake --build --preset fuzz; } >build/build-fuzz.txt 2>&1 ||
  { cat build/build-fuzz.txt; exit 1; }

failed=0
for archive in fuzz/corpus/*.zip; do
  name=$(basename "$archive" .zip)
  output=build/fuzz-output-$name.txt
  found=build/fuzz/found-$name
  mkdir -p "$found"
  longest=4096
  case $name in ini | scripts_ini | zumat) longest=512 ;; esac   # more lines are more of the same, and slow
  start=$SECONDS
  timeout --kill-after=10 $((limit + 60)) nice -n 19 "build/fuzz/fuzz/${name}_fuzz" -runs="$count" -max_total_time="$limit" -max_len=$longest \
    -print_final_stats=1 -artifact_prefix="build/fuzz/$name-" "$found" "build/fuzz/fuzz/corpus/$name" >"$output" 2>&1
  status=$?
  run=$(sed -n 's/^stat::number_of_executed_units: *//p' "$output")
  echo "$name: ${run:-unknown number of} inputs, $((SECONDS - start)) seconds, exit code $status"
  [ $status -eq 0 ] || tail -n 40 "$output"
  [ $status -eq 0 ] && [ "${run:-0}" -ge "$count" ] || failed=1
done
exit $failed
