#!/usr/bin/env bash
# Checks the hardening of the built files: address space layout randomisation with its relocations, no executable data, no section that
# is writable and executable, imports only of the Windows DLLs listed here, the stack protector, no debug information, no build time; and
# the resources: the version of the build, and a program's manifest.
set -euo pipefail
cd "$(dirname "$0")/../.."
tool=i686-w64-mingw32
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' build/release/CMakeCache.txt)
bad=0
complain() { echo "$file: $1"; bad=1; }

# at_least NAME COUNT MINIMUM
at_least() { [ "$2" -ge "$3" ] || complain "$1: $2, less than $3"; }

# check FILE PLACES IMPORT...: PLACES is the minimum number of references to the stack protector's secret, whose address is in the file of
# debug information. Functions that need no protection have none.
check() {
  file=build/release/$1
  local places=$2 allowed="ADVAPI32.dll KERNEL32.dll msvcrt.dll ${*:3}" headers sections resources secret name
  headers=$($tool-objdump -p "$file")
  sections=$($tool-objdump -h -w "$file")
  at_least "ASLR, DEP and no exception handlers of its own" "$(($(sed -n 's/^DllCharacteristics\t*/0x/p' <<<"$headers") & 0x540))" $((0x540))
  at_least "bytes of relocations" "$((0x$(sed -n 's/^Entry 5 [0-9a-f]* \([0-9a-f]*\) Base.*/\1/p' <<<"$headers")))" 100
  ! grep -q 'relocations stripped' <<<"$headers" || complain "relocations are stripped"
  ! grep -q 'Time/Date.* \(20[0-9][0-9]\|19[89][0-9]\)$\|Time/Date stamp.*[1-9a-f]' <<<"$headers" || complain "it holds a time"
  ! grep -w CODE <<<"$sections" | grep -qvw READONLY || complain "a section can be written into and run"
  ! grep -E ' \.(debug|stab)' <<<"$sections" || complain "it holds debug information"
  [ -z "$($tool-nm "$file" 2>/dev/null)" ] || complain "it holds symbols"
  for name in $(sed -n 's/^\tDLL Name: //p' <<<"$headers"); do grep -qiw "$name" <<<"$allowed" || complain "unexpected import $name"; done
  secret=$($tool-nm "$file.debug" | sed -n 's/^0*\([0-9a-f]*\) . ___stack_chk_guard$/\1/p')
  resources=$($tool-windres -i "$file" -O rc)
  for name in "\"OriginalFilename\", \"${file##*/}\"" "\"FileVersion\", \"$version\"" "FILEVERSION ${version//./, }, 0"; do
    grep -qF "$name" <<<"$resources" || complain "its version lacks $name"
  done
  [[ $file != *.exe ]] || { grep -q 'level=""asInvoker""' <<<"$resources" && [ "$(grep -c '<supportedOS Id' <<<"$resources")" = 4 ]; } ||
    complain "its manifest is missing or incomplete"
  ! grep -qi activeCodePage <<<"$resources" || complain "its manifest changes the code page"
  at_least "places with the stack protector" "$($tool-objdump -d "$file" | grep -c "0x${secret:-none}\b" || true)" "$places"
}

check bin/KELUtils.dll 200 USER32.dll
check bin/kelctl.exe 500 USER32.dll SHELL32.dll VERSION.dll
check devkit/ApiCr.dll 5 bcrypt.dll
check devkit/KePIRes.exe 10 USER32.dll
for name in build/release/devkit/*.dll build/release/devkit/*.exe; do
  [[ $name == */ApiCr.dll || $name == */KePIRes.exe ]] || check "devkit/${name##*/}" 5
done
exit $bad
