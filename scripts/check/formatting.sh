#!/usr/bin/env bash
# The form of the C++ files, by .clang-format; lines of comments over 120 columns, which clang-format leaves alone; tabs and blanks at
# the end of a line in every file; and shellcheck for the scripts.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0
complain() { echo "$1"; bad=1; }

mapfile -t sources < <(git ls-files -co --exclude-standard '*.h' '*.cpp')
unformatted=$(clang-format --dry-run "${sources[@]}" 2>&1 | sed -n 's/^\([^:]*:[0-9]*\):.*warning:.*/\1/p' | sort -u)
[ -z "$unformatted" ] || complain "clang-format would change (run clang-format -i):"$'\n'"$unformatted"

# Generated text is between two marks, and may be wide.
wide=$(awk '/clang-format off/ { off = 1 } /clang-format on/ || FNR == 1 { off = 0 }
            !off && length($0) > 120 { print FILENAME ":" FNR }' "${sources[@]}")
[ -z "$wide" ] || complain "over 120 columns:"$'\n'"$wide"

blanks=$(git grep --untracked -nIP '\t|[ \r]+$' -- .)
[ -z "$blanks" ] || complain "a tab, or blanks at the end of the line:"$'\n'"$blanks"
# .shellcheckrc lists the rules that are off.
mapfile -t scripts < <(git ls-files -co --exclude-standard '*.sh' .ci/run)
shellcheck --shell=bash --severity=warning --format=gcc "${scripts[@]}" || bad=1
exit $bad
