#!/usr/bin/env bash
# Checks the built DLL: its exports are those of the .def file, undecorated, and declared in the header. Its import
# libraries have every export by the decorated name that callers refer to.
set -euo pipefail
cd "$(dirname "$0")/.."

dll=build/release/bin/KELUtils.dll
dump=$(i686-w64-mingw32-objdump -p "$dll")

exported=$(sed -n 's/^\t\[ *[0-9]*\] \(.*\)$/\1/p' <<<"$dump" | grep -v '^+base' | sort)
defined=$(sed -n 's/^  \(KE_[A-Za-z]*\)@.*/\1/p' src/KELUtils.def | sort)
declared=$(grep -o 'KE_API KE_[A-Za-z]*' include/KELUtils.h | cut -d' ' -f2 | sort)
bad=0
compare() {
  diff <(echo "$2") <(echo "$3") >/dev/null || { echo "$1 differ:"; diff <(echo "$2") <(echo "$3") || true; bad=1; }
}
compare "the DLL's exports and KELUtils.def" "$exported" "$defined"
compare "the DLL's exports and KELUtils.h" "$exported" "$declared"

decorated=$(sed -n 's/^  \(KE_[A-Za-z]*@[0-9]*\).*/\1/p' src/KELUtils.def | sort)
for library in libKELUtils.dll.a KELUtils.lib; do
  importable=$(i686-w64-mingw32-nm "build/release/lib/$library" 2>/dev/null | sed -n 's/^.* T _\(KE_[A-Za-z]*@[0-9]*\)$/\1/p' | sort)
  compare "the names in $library and KELUtils.def" "$importable" "$decorated"
done
exit $bad
