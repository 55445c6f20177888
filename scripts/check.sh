#!/usr/bin/env bash
# Checks of the tree, one script each in scripts/check, from quick to slow; the slow ones remember which files were good. Prints what
# breaks a rule; exit 1 if anything does. With names of checks it runs those alone: scripts/check.sh wording links.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1

checks=(layers sizes formatting wording links share_of_tests exports shell_scripts cppcheck clang_tidy)
[ $# -eq 0 ] || checks=("$@")
bad=()
for check in "${checks[@]}"; do
  echo "-- ${check//_/ }"
  "scripts/check/$check.sh" || bad+=("$check")
done
[ ${#bad[@]} -eq 0 ] || { echo "rules are broken: ${bad[*]}"; exit 1; }
