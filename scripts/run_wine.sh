#!/usr/bin/env bash
# Runs one Windows program under Wine, again if it was not started; CMake and CTest run the programs of a Windows build with it. Before
# many programs, wine_start of wine.sh saves the start of Wine for each.
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/wine.sh"

[ -n "${KELUTILS_WINE_STARTED:-}" ] || wine_start >&2 || exit 1
output=$(mktemp)
trap 'rm -f "$output"; [ -n "${KELUTILS_WINE_STARTED:-}" ] || wine_stop' EXIT

# The output appears at once: CTest shows that of a program that hangs.
run() { "$wine_bin/wine64" "$@" | tr -d '\r' | tee "$output"; }
run "$@" || { status=$?; was_not_started "$output" || exit $status; run "$@"; }
