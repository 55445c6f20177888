#!/usr/bin/env bash
# Compiles every public header of the build by itself, as C89 and as C++11, for Windows and for this machine; and the program in
# README.md.
set -euo pipefail
cd "$(dirname "$0")/../.."

include=build/release/include
bad=0

# compile NAME COMPILER...: the source comes from standard input.
compile() {
  "${@:2}" -pedantic -Wall -Wextra -Werror -fsyntax-only -I "$include" - || { echo "$1: does not compile with ${*:2}"; bad=1; }
}

for header in "$include"/*.h; do
  name=$(basename "$header")
  for compiler in i686-w64-mingw32-gcc-win32 gcc; do compile "$name" $compiler -std=c89 -x c <<<"#include \"$name\""; done
  for compiler in i686-w64-mingw32-g++-win32 g++; do compile "$name" $compiler -std=c++11 -x c++ <<<"#include \"$name\""; done
done

program=$(sed -n '/^```c$/,/^```$/{/^```/!p}' README.md)
grep -q 'int main' <<<"$program" || { echo "README.md has no program"; bad=1; }
compile "the program in README.md" i686-w64-mingw32-gcc-win32 -std=c89 -x c <<<"$program"
exit $bad
