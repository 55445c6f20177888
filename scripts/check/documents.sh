#!/usr/bin/env bash
# Checks the documents against the tree: names of test files, links to files and headings, length of lines; and every text for words that
# have no place in it.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0
# complain TITLE FINDINGS: the findings may be empty.
complain() { [ -z "$2" ] || { printf '%s\n' "$@"; bad=1; }; }
documents=(README.md CONTRIBUTING.md CHANGELOG.md docs/*.md devkit/README.md)

complain "docs/known-oddities.md names missing test files:" "$(grep -o '([a-z_0-9]*_test)' docs/known-oddities.md | tr -d '()' | sort -u |
  while read -r name; do git ls-files -co --exclude-standard 'tests/*.cpp' | grep -q "/$name.cpp$" || echo "$name"; done)"

# headings FILE: in the form of links.
headings() {
  grep '^#' "$1" | sed 's/^#* //; s/\[\([^]]*\)\]([^)]*)/\1/g' | tr '[:upper:]' '[:lower:]' | sed 's/[^a-z0-9 _-]//g; s/ /-/g'
}
complain "broken links:" "$(
  for file in "${documents[@]}"; do   # without code
    sed '/^ *```/,/^ *```/d; s/`[^`]*`//g' "$file" | grep -oE '\]\([^)]+\)' | sed 's|^](\(.*\))|\1|' | grep -v '^http' | while read -r link; do
      path=${link%%#*}
      target=$file
      [ -z "$path" ] || target=$(dirname "$file")/$path
      [ -e "$target" ] && { [[ $link != *'#'* ]] || headings "$target" | grep -qx -- "${link#*#}"; } || echo "$file: $link"
    done
  done)"
complain "over 140 characters:" "$(awk 'FNR == 1 { code = 0 } /^```/ { code = !code } !code && !/^\|/ && length > 140 { print FILENAME ":" FNR }' \
  "${documents[@]}")"

# rule REASON PATTERN PATHS...: the (Perl) pattern has a letter in brackets where it would find itself.
rule() { complain "$1:" "$(git grep --untracked -nIP "$2" -- "${@:3}")"; }
texts=('*.md' '*.h' '*.cpp' '*.in' '*.cmake' '*CMakeLists.txt')
rule "texts do not name where a requirement is written" '\b(?i:specificatio[n])|\b(Part|Subsystem) [0-9]' .
rule "open work is no comment" '\b(TOD[O]|FIXM[E]|XX[X]|HAC[K])\b' .
rule "texts speak of the system, not of their writer" '(?<!")\b([Ww]e|us|[Oo]ur|[Mm]y) [a-z]|\bI (am|have|do|think|will)\b' "${texts[@]}"
rule "praise" '\b(?i:blazing|seamless|effortless|cutting-edge|world-class|state-of-the-art|awesome|amazing)' "${texts[@]}"
rule "exclamation marks" '[a-z]!( |$)' "${texts[@]}"
rule "paths of one machine" '(^|[^A-Za-z0-9_.}*-])/(home|tmp|root|Users)/' . ':!scripts'
complain "paths of this machine:" "$(git grep --untracked -nIF "$PWD/")"
exit $bad
