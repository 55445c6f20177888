#!/usr/bin/env bash
# Runs one Windows program under Wine; CMake and CTest run the programs of a Windows build by it. With many programs to come,
# wine_start of wine.sh before them saves the start of Wine for each.
set -uo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/wine.sh"

if [ -z "${KELUTILS_WINE_STARTED:-}" ]; then
  wine_start >&2 || exit 1
  trap wine_stop EXIT
fi
run_wine "$@" | tr -d '\r'
