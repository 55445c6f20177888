#!/usr/bin/env bash
# Runs one Windows program under Wine, once more when it was not started; CMake and CTest run the programs of a Windows build by it. With
# many programs to come, wine_start of wine.sh before them saves the start of Wine for each.
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/wine.sh"

if [ -z "${KELUTILS_WINE_STARTED:-}" ]; then
  wine_start >&2 || exit 1
fi
output=$(mktemp)
trap 'rm -f "$output"; [ -n "${KELUTILS_WINE_STARTED:-}" ] || wine_stop' EXIT

# The output is not held back: CTest shows that of a program that hangs.
run() { "$wine_bin/wine64" "$@" | tr -d '\r' | tee "$output"; }
run "$@"
status=$?
if [ $status -ne 0 ] && was_not_started "$output"; then
  run "$@"
  status=$?
fi
exit $status
