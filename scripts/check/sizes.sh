#!/usr/bin/env bash
# Files of at most 400 lines, functions of at most 60. The exported interface is one header, however long.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
bad=0
complain() { echo "$1"; bad=1; }

while read -r lines file; do
  [ "$file" = total ] || [ "$file" = include/KELUtils.h ] || [ "$lines" -le 400 ] || complain "long file ($lines lines): $file"
done < <(git ls-files -co --exclude-standard 'src/*' 'devkit/*' 'tools/*' 'include/*' | grep -E '\.(h|cpp)$' | xargs wc -l)
while read -r long; do complain "long function (over 60 lines): $long"; done < <(
  git ls-files -co --exclude-standard 'src/*.cpp' 'devkit/*.cpp' 'tools/*.cpp' | xargs awk '
    FNR == 1 { start = 0 }
    /^[A-Za-z].*[({]$/ || /^[A-Za-z].*\) (const |noexcept )*\{$/ { start = FNR; name = $0 }
    /^}/ { if (start && FNR - start > 60 && name !~ /^(namespace|constexpr|inline|const)/) print FILENAME ":" start; start = 0 }')
exit $bad
