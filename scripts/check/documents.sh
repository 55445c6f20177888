#!/usr/bin/env bash
# Checks the documents against the tree: names of test files, links to files and headings, length of lines.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0
complain() { echo "$1"; bad=1; }
documents=(README.md CONTRIBUTING.md docs/*.md devkit/README.md)

# docs/known-oddities.md names the test files that pin its entries.
while read -r name; do
  git ls-files -co --exclude-standard 'tests/*.cpp' | grep -q "/$name.cpp$" || complain "docs/known-oddities.md names $name, which does not exist"
done < <(grep -o '([a-z_0-9]*_test)' docs/known-oddities.md | tr -d '()' | sort -u)

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
