#!/usr/bin/env bash
# Words that have no place in the tree, each rule with its reason. A pattern has a letter in brackets where it would find itself.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0

# rule REASON PATTERN PATHS...: complains about each line of the files at PATHS with the (Perl) PATTERN.
rule() {
  local reason=$1 pattern=$2 found
  shift 2
  found=$(git grep --untracked -nIP "$pattern" -- "$@") || return 0
  echo "$reason:"
  echo "$found"
  bad=1
}
texts=('*.md' '*.h' '*.cpp' '*.in' '*.cmake' '*CMakeLists.txt')

rule "a text stands for itself: where a requirement is written is not said" \
  '\b(?i:specificatio[n])|\b(Part|Subsystem) [0-9]' .
rule "what is not done is no comment" '\b(TOD[O]|FIXM[E]|XX[X]|HAC[K])\b' .
rule "comments and documents speak of the system, not of their writer" '(?<!")\b([Ww]e|us|[Oo]ur|[Mm]y) [a-z]|\bI (am|have|do|think|will)\b' "${texts[@]}"
rule "praise is no information" '\b(?i:blazing|seamless|effortless|cutting-edge|world-class|state-of-the-art|awesome|amazing)' "${texts[@]}"
rule "nothing to exclaim" '[a-z]!( |$)' "${texts[@]}"
rule "a path of one machine" '(^|[^A-Za-z0-9_.}*-])/(home|tmp|root|Users)/' . ':!scripts'

found=$(git grep --untracked -nIF "$PWD/") && { echo "a path of this machine:"; echo "$found"; bad=1; }
exit $bad
