#!/usr/bin/env bash
# A folder of src/ may use the folders that its arrows lead to, directly or through others, in the picture of the layers in
# docs/overview.md. Checks the #include lines and, when the tree is built, the symbols of the object files, which reveal calls of exports.
set -uo pipefail
cd "$(dirname "$0")/../.." || exit 1
edges=$(sed -n '/^flowchart TD/,/^```/p' docs/overview.md)

# Reads lines "FROM TO PLACE" of uses between two folders, and complains about those that the picture does not allow.
judge() {
  awk -v edges="$edges" '
    BEGIN {
      for (n = split(edges, line, "\n"); n > 0; --n) {
        if (line[n] !~ /^    /) continue
        for (words = split(substr(line[n], 5), word, " "); words > 0; --words) {   # from the end of the line to its beginning
          if (word[words] == "-->") { split("", lower); for (each in upper) lower[each]; split("", upper) }
          else if (word[words] != "&") { known[word[words]]; upper[word[words]]; for (each in lower) may[word[words], each] }
        }
        split("", lower); split("", upper)
      }
      for (via in known) for (from in known) for (to in known) if ((from, via) in may && (via, to) in may) may[from, to]
    }
    !($1 in known) { print "the picture in docs/overview.md lacks " $1; bad = 1; next }
    $1 != $2 && !(($1, $2) in may) { print $1 " uses " $2 " against the picture in docs/overview.md: " $3; bad = 1 }
    END { exit bad }' | sort -u
}

status=0
for file in src/*/*.h src/*/*.cpp; do
  folder=$(basename "$(dirname "$file")")
  sed -n 's|^#include "\([a-z]*\)/.*|\1|p' "$file" | sort -u | sed "s|.*|$folder & $file|"
done | judge || status=1

objects=build/release/src/CMakeFiles
[ -d "$objects" ] || { echo "not built: only the #include lines were checked"; exit $status; }
for folder in src/*/; do
  folder=$(basename "$folder")
  [ "$folder" != runtime ] || continue   # it replaces functions of the compiler that everything uses
  find "$objects" -path "*/$folder/*.obj" -exec i686-w64-mingw32-nm {} + | sed -n "s/^[0-9a-f ]*\([TDBRU]\) \(.*\)$/$folder \1 \2/p"
done | awk '
  $2 != "U" { home[$3] = $1; next }
  { used[$1, $3] }
  END { for (use in used) { split(use, part, SUBSEP); if (part[2] in home) print part[1], home[part[2]], part[2] } }' | judge || status=1
exit $status
