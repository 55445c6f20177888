#!/usr/bin/env bash
# Compiles every public header of the build by itself, as C89 and as C++11, for Windows and for this machine; compares the type of each
# export in KELUtils.h with its declaration; and compiles the program in README.md.
set -euo pipefail
cd "$(dirname "$0")/.."

include=build/release/include
warnings=(-pedantic -Wall -Wextra -Werror -fsyntax-only)
bad=0

# compile WHAT COMPILER...: the source comes from standard input.
compile() {
  local what=$1
  shift
  "$@" "${warnings[@]}" -I "$include" - || { echo "$what: does not compile with $*"; bad=1; }
}
as_c() { compile "$1" "$2" -std=c89 -x c; }
as_cpp() { compile "$1" "$2" -std=c++11 -x c++; }

for header in "$include"/*.h; do
  name=$(basename "$header")
  for compiler in i686-w64-mingw32-gcc-win32 gcc; do as_c "$name" $compiler <<<"#include \"$name\""; done
  for compiler in i686-w64-mingw32-g++-win32 g++; do as_cpp "$name" $compiler <<<"#include \"$name\""; done
done

exports=$(sed -n 's/^  \(KE_[A-Za-z0-9_]*\)@[0-9]*.*/\1/p' src/KELUtils.def)
[ -n "$exports" ] || { echo "no exports in KELUtils.def"; bad=1; }
{
  printf '#include <type_traits>\n#include "KELUtils.h"\n'
  for name in $exports; do echo "static_assert(std::is_same<${name}_t, decltype(&${name})>::value, \"$name\");"; done
} | as_cpp "the types of the exports" i686-w64-mingw32-g++-win32

# The program that README.md begins with.
sed -n '/^```c$/,/^```$/{/^```/!p}' README.md >build/readme-program.c
grep -q 'int main' build/readme-program.c || { echo "README.md has no program"; bad=1; }
as_c "the program in README.md" i686-w64-mingw32-gcc-win32 <build/readme-program.c
exit $bad
