#!/usr/bin/env bash
# Mutation testing: scripts/mutate.sh N SEED builds N random small changes of src/ into one copy of the tree and prints the share that the
# tests detect, and the survivors.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh

scripts/build.sh >/dev/null
trap stop_display EXIT
start_display
/usr/bin/python3 tools/mutate/mutate.py "$@"
