#!/usr/bin/env bash
# Each export is listed in KELUtils.def, declared once in KELUtils.h below a comment with its contract, and defined once, in an
# _exports.cpp file; nothing else is. The function types of the header are those of its declarations.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0
complain() { echo "$1"; bad=1; }

listed=$(sed -n 's/^  \(KE_[A-Za-z0-9_]*\)@.*/\1/p' src/KELUtils.def | sort)
[ -n "$listed" ] || complain "no exports in src/KELUtils.def"

# compare WHERE NAMES: the names found there against those listed.
compare() {
  local name
  for name in $(comm -23 <(echo "$listed") <(echo "$2")); do complain "$name is in src/KELUtils.def, but not $1"; done
  for name in $(comm -13 <(echo "$listed") <(echo "$2")); do complain "$name is $1 more often than in src/KELUtils.def"; done
}
compare "declared in include/KELUtils.h" "$(grep -o 'KE_API KE_[A-Za-z0-9_]*' include/KELUtils.h | cut -d' ' -f2 | sort)"
compare "defined in an _exports.cpp file" "$(sed -n 's/^[A-Za-z].* KE_API \(KE_[A-Za-z0-9_]*\)(.*/\1/p' src/*/*_exports.cpp | sort)"
elsewhere=$(grep -rnE '^[A-Za-z].* KE_API KE_' src --include='*.cpp' --exclude='*_exports.cpp')
[ -z "$elsewhere" ] || complain "an export outside the _exports.cpp files:"$'\n'"$elsewhere"

# A contract may be that of several declarations without a blank line between them.
bare=$(awk '/^$/ { contract = 0 } /\*\/$/ { contract = 1 }
            / KE_API KE_/ && !contract { print FILENAME ":" FNR ": " $0 }' include/KELUtils.h)
[ -z "$bare" ] || complain "no contract above the declaration:"$'\n'"$bare"

# The program that writes the types works on the header of its own tree: here on a copy.
copy=build/check/function_types
mkdir -p "$copy/include" "$copy/cmake"
cp include/KELUtils.h "$copy/include/"
cp cmake/WriteFunctionTypes.cmake "$copy/cmake/"
cmake -P "$copy/cmake/WriteFunctionTypes.cmake" && cmp -s include/KELUtils.h "$copy/include/KELUtils.h" ||
  complain "the function types in include/KELUtils.h are not those of its declarations: run cmake -P cmake/WriteFunctionTypes.cmake"
exit $bad
