#!/usr/bin/env bash
# Checks what the documents say against the tree: result codes, exports, the names of tests, links to files and headings.
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
bad=0
complain() { echo "$1"; bad=1; }
# compare WHAT LEFT RIGHT: two lists, which have to be the same and not empty.
compare() {
  [ -n "$2" ] || complain "$1: nothing was found"
  diff <(echo "$2") <(echo "$3") >/dev/null || { complain "$1 differ (< first, > second):"; diff <(echo "$2") <(echo "$3") | grep '^[<>]'; }
}

# Result codes: number and name in the header and in the table, names in kelctl and at the exports.
codes=$(sed -n '/^enum {/,/^};/s/^  \(KE_[A-Z0-9_]*\) = \([0-9]*\).*/\2 \1/p' include/KEResults.h)
names=$(cut -d' ' -f2 <<<"$codes" | sort)
compare "result codes: KEResults.h and docs/result-codes.md" "$codes" \
  "$(sed -n 's/^| \([0-9]*\) | `\(KE_[A-Z0-9_]*\)` |.*/\1 \2/p' docs/result-codes.md)"
compare "result codes: KEResults.h and kelctl" "$names" \
  "$(grep -o 'KELCTL_CODE(KE_[A-Z0-9_]*' tools/kelctl/result_codes.cpp | cut -d'(' -f2 | sort)"
for name in $(sed -n 's/^ \* @retval \([A-Za-z0-9_]*\).*/\1/p' include/KELUtils.h | sort -u); do
  grep -qx "$name" <<<"$names" || complain "include/KELUtils.h: an export lists $name, which is no result code"
done

# Exports: README.md names all of them, and the documents no other one.
exports=$(sed -n 's/^  \(KE_[A-Za-z0-9_]*\)@.*/\1/p' src/KELUtils.def | sort)
compare "exports: KELUtils.def and the table in README.md" "$exports" \
  "$(sed -n '/^## The exports/,/^## /p' README.md | grep -o '`KE_[A-Za-z0-9]*`' | tr -d '`' | sort)"
known=$(git ls-files -co --exclude-standard 'src/*' 'include/*' 'devkit/*' 'cmake/*' | xargs grep -oh 'KE_[A-Za-z0-9_]*' | sort -u)
for name in $(grep -oh '`KE_[A-Za-z0-9_]*[A-Za-z0-9]`' README.md docs/*.md | tr -d '`' | sort -u); do
  grep -qx "$name" <<<"$known" || complain "the documents name $name, which does not exist"
done

# Tests: a text in backquotes of the form `group: what...` in docs/known-oddities.md begins the name of a test.
tests=$(git ls-files -co --exclude-standard 'tests/*.cpp' | xargs cat | tr '\n' ' ' | grep -o 'TEST_CASE( *"[^"]*' | sed 's/^[^"]*"//')
found=0
while read -r name; do
  found=$((found + 1))
  awk -v begin="${name%...}" 'index($0, begin) == 1 { hit = 1 } END { exit !hit }' <<<"$tests" ||
    complain "docs/known-oddities.md names a test that does not exist: $name"
done < <(tr '\n' ' ' <docs/known-oddities.md | tr -s ' ' | awk -F'`' '{ for (i = 2; i <= NF; i += 2) if ($i ~ /: /) print $i }')
[ "$found" -gt 0 ] || complain "docs/known-oddities.md names no test"

# Links. headings FILE: as they are linked to.
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
  for file in README.md CONTRIBUTING.md docs/*.md devkit/README.md; do
    # without blocks and pieces of code
    sed '/^ *```/,/^ *```/d; s/`[^`]*`//g' "$file" | grep -oE '\]\([^)]+\)' | sed "s|^\](\([^)]*\))|$file:\1|" | grep -v ':http'
  done)

# Lines.
while read -r place; do complain "more than 140 characters: $place"; done < <(
  awk 'FNR == 1 { code = 0 } /^```/ { code = !code } !code && !/^\|/ && length > 140 { print FILENAME ":" FNR }' README.md CONTRIBUTING.md docs/*.md)
exit $bad
