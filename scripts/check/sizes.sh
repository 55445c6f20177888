#!/usr/bin/env bash
# Files of at most 400 lines, functions of at most 30 in src and 60 elsewhere; the exported interface is one header, however long. The tests and fuzzers are at
# most 40 % of the other code, counted in lines that are not blank, of C and C++ files and resources.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0
complain() { echo "$1"; bad=1; }

while read -r lines file; do
  [ "$file" = total ] || [ "$file" = include/KELUtils.h ] || [ "$lines" -le 400 ] || complain "long file ($lines lines): $file"
done < <(git ls-files -co --exclude-standard 'src/*' 'devkit/*' 'tools/*' 'include/*' | grep -E '\.(h|cpp)$' | xargs wc -l)
while read -r long; do complain "long function: $long"; done < <(
  git ls-files -co --exclude-standard 'src/*.cpp' 'devkit/*.cpp' 'tools/*.cpp' | xargs awk '
    FNR == 1 { start = 0 }
    /^[A-Za-z].*[({]$/ || /^[A-Za-z].*\) (const |noexcept )*\{$/ { start = FNR; name = $0 }
    /^}/ { if (start && FNR - start > (FILENAME ~ /^src/ ? 30 : 60) && name !~ /^(namespace|constexpr|inline|const)/) print FILENAME ":" start
            start = 0 }')

lines() { git ls-files -co --exclude-standard '*.c' '*.cpp' '*.h' '*.rc' | grep -E "$@" '^(tests|fuzz)/' | xargs cat | grep -cv '^[[:space:]]*$'; }
tests=$(lines --)
rest=$(lines -v --)
echo "the tests are $((100 * tests / rest)) % of the other code: $tests lines and $rest"
[ $((100 * tests / rest)) -le 40 ] || complain "too many tests"
exit $bad
