#!/usr/bin/env bash
# Links of the documents that lead to a file or folder of the tree lead to one that is there.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0

while IFS=: read -r document line link; do
  target=${link#*](}
  target=${target%)}
  target=${target%%#*}
  case $target in '' | *://* | mailto:*) continue ;; esac
  [ -e "$(dirname "$document")/$target" ] || { echo "$document:$line: $target is not there"; bad=1; }
done < <(git grep --untracked -noIE '\[[A-Za-z0-9][^]]*\]\([^) ]+\)' -- '*.md')
exit $bad
