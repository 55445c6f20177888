#!/usr/bin/env bash
# The form of the C++ files, as .clang-format says; and what clang-format leaves alone: lines of comments over 120 columns. Tabs and
# blanks at the end of a line are wrong in every file but the inputs of the fuzzers.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0
complain() { echo "$1"; bad=1; }

mapfile -t sources < <(git ls-files -co --exclude-standard '*.h' '*.cpp')
unformatted=$(clang-format --dry-run "${sources[@]}" 2>&1 | sed -n 's/^\([^:]*:[0-9]*\):.*warning:.*/\1/p' | sort -u)
[ -z "$unformatted" ] || complain "clang-format would change (run clang-format -i):"$'\n'"$unformatted"

# What is written by a program stands between two marks, and may be wide.
wide=$(awk '/clang-format off/ { off = 1 } /clang-format on/ || FNR == 1 { off = 0 }
            !off && length($0) > 120 { print FILENAME ":" FNR }' "${sources[@]}")
[ -z "$wide" ] || complain "over 120 columns:"$'\n'"$wide"

blanks=$(git grep --untracked -nIP '\t|[ \r]+$' -- ':!fuzz/corpus')
[ -z "$blanks" ] || complain "a tab, or blanks at the end of the line:"$'\n'"$blanks"
exit $bad
