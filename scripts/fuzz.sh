#!/usr/bin/env bash
# Builds and runs the fuzzers: scripts/fuzz.sh [COUNT [SECONDS]]. Each gets COUNT inputs (default 10000000), first those of fuzz/corpus, for
# at most SECONDS (default 3600). Prints a line for each; exit 1 when one has a finding or too few inputs. Findings stay in build/fuzz.
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
  case $name in ini | scripts_ini | zumat) longest=512 ;; *) longest=4096 ;; esac   # many lines are slow
  start=$SECONDS
  timeout --kill-after=10 $((limit + 60)) nice -n 19 "build/fuzz/fuzz/${name}_fuzz" -runs="$count" -max_total_time="$limit" -max_len=$longest \
    -print_final_stats=1 -artifact_prefix="build/fuzz/$name-" "$found" "build/fuzz/fuzz/corpus/$name" >"$output" 2>&1
  status=$?
  run=$(sed -n 's/^stat::number_of_executed_units: *//p' "$output")
  echo "$name: ${run:-unknown number of} inputs, $((SECONDS - start)) seconds, exit code $status"
  [ $status -eq 0 ] && [ "${run:-0}" -ge "$count" ] || { tail -n 40 "$output"; failed=1; }
done
exit $failed
