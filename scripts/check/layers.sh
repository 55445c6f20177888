#!/usr/bin/env bash
# Which folder of src/ may use which: the list in docs/overview.md, lines of the form "- `folder` -> `folder`, `folder`". Looks at the
# #include lines and, when the tree is built, at the symbols of the object files, for includes do not show calls of exports.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
edges=$(mktemp)
trap 'rm -f "$edges"' EXIT
sed -n 's/^- `\([a-z]*\)` -> \(.*\)$/\1 \2/p' docs/overview.md | tr -d '`,.' >"$edges"

# Lines "FROM TO WHAT" of uses between two folders; those that the list does not have are complained of.
judge() {
  awk -v list="$edges" '
    BEGIN { while ((getline line < list) > 0) { n = split(line, word, " "); known[word[1]] = 1; for (i = 2; i <= n; ++i) may[word[1], word[i]] = 1 } }
    !($1 in known) { print "docs/overview.md lists no edges for " $1; bad = 1; next }
    $1 != $2 && !(($1, $2) in may) { print $1 " uses " $2 ", which docs/overview.md does not list: " $3; bad = 1 }
    END { exit bad }' | sort -u
}

status=0
for file in src/*/*.h src/*/*.cpp; do
  folder=$(basename "$(dirname "$file")")
  sed -n 's|^#include "\([a-z]*\)/.*|\1|p' "$file" | sort -u | sed "s|.*|$folder & $file|"
done | judge || status=1

objects=build/release/src/CMakeFiles
[ -d "$objects" ] || { echo "not built: only the #include lines were looked at"; exit $status; }
for folder in src/*/; do
  folder=$(basename "$folder")
  [ "$folder" != runtime ] || continue   # it stands in for functions of the compiler that everything uses
  find "$objects" -path "*/$folder/*.obj" -exec i686-w64-mingw32-nm {} + | sed -n "s/^[0-9a-f ]*\([TDBRU]\) \(.*\)$/$folder \1 \2/p"
done | awk '
  $2 != "U" { home[$3] = $1; next }
  { used[$1, $3] }
  END { for (use in used) { split(use, part, SUBSEP); if (part[2] in home) print part[1], home[part[2]], part[2] } }' | judge || status=1
exit $status
