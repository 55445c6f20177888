#!/usr/bin/env bash
# Which folder of src/ may include which: the list in docs/overview.md, lines of the form "- `folder` -> `folder`, `folder`".
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0
complain() { echo "$1"; bad=1; }

edges=$(sed -n 's/^- `\([a-z]*\)` -> \(.*\)$/\1 \2/p' docs/overview.md | tr -d '`,.')

while read -r folder targets; do
  for file in src/"$folder"/*; do
    [ -e "$file" ] || continue
    while read -r included; do
      [ "$included" = "$folder" ] || grep -qw "$included" <<<"$targets" ||
        complain "$file includes $included/, which docs/overview.md does not list for $folder"
    done < <(sed -n 's/^#include "\([a-z]*\)\/.*/\1/p' "$file" | sort -u)
  done
done <<<"$edges"
for folder in src/*/; do
  grep -q "^$(basename "$folder") " <<<"$edges" || complain "docs/overview.md lists no include directions for $folder"
done
exit $bad
