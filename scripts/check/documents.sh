#!/usr/bin/env bash
# Checks the documents against the tree: names of tests, links to files and headings, length of lines.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0
complain() { echo "$1"; bad=1; }
documents=(README.md CONTRIBUTING.md docs/*.md devkit/README.md)

# A text in backquotes of the form `group: what...` in docs/known-oddities.md is the begin of a test's name.
tests=$(git ls-files -co --exclude-standard 'tests/*.cpp' | xargs cat | tr '\n' ' ' | grep -o 'TEST_CASE( *"[^"]*' | sed 's/^[^"]*"//')
pinned=$(tr '\n' ' ' <docs/known-oddities.md | tr -s ' ' | awk -F'`' '{ for (i = 2; i <= NF; i += 2) if ($i ~ /: /) print $i }')
[ -n "$pinned" ] || complain "docs/known-oddities.md names no test"
while read -r name; do
  awk -v begin="${name%...}" 'index($0, begin) == 1 { hit = 1 } END { exit !hit }' <<<"$tests" ||
    complain "docs/known-oddities.md names a test that does not exist: $name"
done <<<"$pinned"

# headings FILE: in the form in which links name them.
headings() {
  grep '^#' "$1" | sed 's/^#* //; s/\[\([^]]*\)\]([^)]*)/\1/g' | tr '[:upper:]' '[:lower:]' | sed 's/[^a-z0-9 _-]//g; s/ /-/g'
}
while IFS=: read -r file link; do
  path=${link%%#*}
  target=$file
  [ -z "$path" ] || target=$(dirname "$file")/$path
  [ -e "$target" ] || { complain "$file links to $path, which does not exist"; continue; }
  [[ $link != *'#'* ]] || headings "$target" | grep -qx -- "${link#*#}" || complain "$file links to a heading that does not exist: $link"
done < <(
  for file in "${documents[@]}" CHANGELOG.md; do # without code
    sed '/^ *```/,/^ *```/d; s/`[^`]*`//g' "$file" | grep -oE '\]\([^)]+\)' | sed "s|^\](\([^)]*\))|$file:\1|" | grep -v ':http'
  done)

while read -r place; do complain "more than 140 characters: $place"; done < <(
  awk 'FNR == 1 { code = 0 } /^```/ { code = !code } !code && !/^\|/ && length > 140 { print FILENAME ":" FNR }' README.md CONTRIBUTING.md docs/*.md)
exit $bad
