#!/usr/bin/env bash
# Checks of the tree: include directions, sizes of files and functions. Prints what breaks a rule; exit 1 if anything does.
set -uo pipefail
cd "$(dirname "$0")/.."
bad=0
complain() { echo "$1"; bad=1; }

# Which folder may include which: the list in docs/overview.md, lines of the form "- `folder` -> `folder`, `folder`".
allowed_edges() { sed -n 's/^- `\([a-z]*\)` -> \(.*\)$/\1 \2/p' docs/overview.md | tr -d '`,.'; }

while read -r folder targets; do
  for file in src/"$folder"/*; do
    [ -e "$file" ] || continue
    while read -r included; do
      [ "$included" = "$folder" ] || grep -qw "$included" <<<"$targets" ||
        complain "$file includes $included/, which docs/overview.md does not list for $folder"
    done < <(sed -n 's/^#include "\([a-z]*\)\/.*/\1/p' "$file" | sort -u)
  done
done < <(allowed_edges)
for folder in src/*/; do
  allowed_edges | grep -q "^$(basename "$folder") " || complain "docs/overview.md lists no include directions for $folder"
done

# Sizes. The exported interface is one header, however long.
while read -r lines file; do
  [ "$file" = total ] || [ "$file" = include/KELUtils.h ] || [ "$lines" -le 400 ] || complain "long file ($lines lines): $file"
done < <(git ls-files -co --exclude-standard 'src/*' 'devkit/*' 'tools/*' 'include/*' | grep -E '\.(h|cpp)$' | xargs wc -l)
while read -r long; do complain "long function (over 60 lines): $long"; done < <(
  git ls-files -co --exclude-standard 'src/*.cpp' 'devkit/*.cpp' 'tools/*.cpp' | xargs awk '
    FNR == 1 { start = 0 }
    /^[A-Za-z].*[({]$/ || /^[A-Za-z].*\) (const |noexcept )*\{$/ { start = FNR; name = $0 }
    /^}/ { if (start && FNR - start > 60 && name !~ /^(namespace|constexpr|inline|const)/) print FILENAME ":" start; start = 0 }')

if command -v clang-format >/dev/null; then
  unformatted=$(git ls-files -co --exclude-standard '*.h' '*.cpp' | xargs clang-format --dry-run 2>&1 | grep -c 'warning:' || true)
  [ "$unformatted" -eq 0 ] || complain "clang-format would change $unformatted places: run clang-format -i"
fi
exit $bad
