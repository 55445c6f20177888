#!/usr/bin/env bash
# Unpacks the package into an empty folder, builds the samples against it and runs them under Wine, in a product tree whose library
# is the packaged one and whose other modules are the development versions.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/wine.sh

root=$PWD
work=$root/build/samples
rm -rf "$work"
mkdir -p "$work/unpacked" "$work/product"/{KELUtils,KESAgent,Common,Scheduler,Sample}
unzip -q build/release/package/*.zip -d "$work/unpacked"
package=$(echo "$work"/unpacked/*)
samples=$package/share/KELUtils/samples
product=$work/product
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' build/release/CMakeCache.txt)
prefix=i686-w64-mingw32
strict=(-std=c89 -pedantic -Wall -Wextra -Werror)

fail() { echo "$*"; exit 1; }
[ "$(basename "$package")" = "KELUtils-$version-win32" ] || fail "the package's folder is $(basename "$package")"

# build_sample NAME: configures and builds the sample of that folder as a user does, with find_package.
build_sample() {
  cmake -S "$samples/$1" -B "$work/$1" -G Ninja -DCMAKE_PREFIX_PATH="$package" -DCMAKE_SYSTEM_NAME=Windows \
    -DCMAKE_C_COMPILER=$prefix-gcc-win32 -DCMAKE_CXX_COMPILER=$prefix-g++-win32 \
    -DCMAKE_C_FLAGS="${strict[*]}" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" >"$work/output-$1.txt" 2>&1 &&
    cmake --build "$work/$1" >>"$work/output-$1.txt" 2>&1 || { cat "$work/output-$1.txt"; fail "the sample $1 does not build"; }
}

# The C sample by hand, with pkg-config.
build_with_pkg_config() {
  local -x PKG_CONFIG_LIBDIR=$package/lib/pkgconfig PKG_CONFIG_DONT_DEFINE_PREFIX=1
  [ "$(pkg-config --modversion KELUtils)" = "$version" ] || fail "pkg-config tells another version"
  # shellcheck disable=SC2046  # several words
  $prefix-gcc-win32 "${strict[@]}" -o "$product/KELUtils/by_pkg_config.exe" "$samples/c/agent.c" $(pkg-config --cflags --libs KELUtils)
}

# A small program by a linker of the MSVC family, with the library that find_package has for those.
build_with_other_linker() {
  cmake -S scripts/package/other_linker -B "$work/other" -G Ninja -DCMAKE_PREFIX_PATH="$package" -DEXPECTED_VERSION="$version" \
    -DOUTPUT="$work/import-library.txt" >"$work/output-other.txt" 2>&1 || { cat "$work/output-other.txt"; return 1; }
  $prefix-gcc-win32 -I "$package/include" -c -o "$work/caller.obj" scripts/package/other_linker/caller.c
  printf 'LIBRARY kernel32.dll\nEXPORTS\n  ExitProcess@4\n' >"$work/kernel32.def"
  llvm-dlltool -m i386 -k -d "$work/kernel32.def" -l "$work/kernel32.lib"
  lld-link /nologo /subsystem:console /entry:start /safeseh:no "/out:$product/KELUtils/by_other_linker.exe" \
    "$work/caller.obj" "$(cat "$work/import-library.txt")" "$work/kernel32.lib"
}

# run_sample NAME JOB COMMAND...: must print the agent's identity, a setting that the library deciphers, and the job, which must be
# there afterwards.
run_sample() {
  local name=$1 job=$2 output setting
  shift 2
  output=$(run_wine "$@" 2>&1 | tr -d '\r') || fail "the sample $name failed: $output"
  grep -qx 'agent ID: sample-agent' <<<"$output" || fail "the sample $name does not show the identity: $output"
  setting=$(sed -n '/^setting of/,/^job/p' <<<"$output" | sed '$d; s/^setting of.*: //')
  [ "$(run_wine "$product/KELUtils/kelctl.exe" setting decrypt "$setting" | tr -d '\r')" = secret ] ||
    fail "the setting of the sample $name cannot be deciphered: $output"
  output=$(run_wine "$product/Scheduler/zumat.exe" -list)
  grep -q "^$job .*KEPLPMNG.*SAMPLE" <<<"$output" || fail "the sample $name has left no job $job: $output"
  rm -f "$product/Scheduler/Config/jobs.json"
  echo "$name: passed"
}

build_sample c
build_sample cpp
build_with_pkg_config
build_with_other_linker

devkit=build/release/devkit
cp "$package/bin/KELUtils.dll" "$package/bin/kelctl.exe" "$devkit/ApiCr.dll" "$work/c/linked_agent.exe" "$product/KELUtils/"
cp "$devkit/ApiCr.dll" "$devkit/TvLogSys.dll" "$product/Common/"
cp "$devkit/zumat.exe" "$product/Scheduler/"
cp "$work/cpp/loading_agent.exe" "$product/Sample/"
linked=$product/KELUtils/linked_agent.exe
loading=$product/Sample/loading_agent.exe

wine_start
trap wine_stop EXIT
# What Wine starts along with the first program keeps that one's output open: nothing must wait for its end.
run_wine "$product/KELUtils/kelctl.exe" --version >"$work/output-first.txt" 2>&1 || { cat "$work/output-first.txt"; exit 1; }

# Without an identity they say so and fail.
for sample in "$linked" "$loading"; do
  output=$(run_wine "$sample" 2>&1) && fail "$(basename "$sample") succeeds without an agent ID"
  grep -q 'no agent ID yet' <<<"$output" || fail "$(basename "$sample") without an agent ID: $output"
done
! run_wine "$product/KELUtils/by_other_linker.exe" || fail "a program by another linker succeeds without an agent ID"
run_wine "$product/KELUtils/kelctl.exe" set agent-id sample-agent
run_sample "C, find_package" 9001 "$linked"
run_sample "C, pkg-config" 9001 "$product/KELUtils/by_pkg_config.exe"
run_sample "C++, loaded" 9002 "$loading"
run_wine "$product/KELUtils/by_other_linker.exe" || fail "a program by another linker fails"
echo "C, linker of the MSVC family: passed"

# C#: needs a compiler; Python: its syntax only, for there is no 32-bit Python for Windows.
if command -v mcs >/dev/null; then
  mcs -warnaserror -platform:x86 "-out:$work/Agent.exe" "$samples/csharp/Agent.cs"
  echo "C#: compiled"
else
  echo "C#: skipped, there is no mcs"
fi
if command -v python3 >/dev/null; then
  python3 -c 'import sys; compile(open(sys.argv[1]).read(), sys.argv[1], "exec")' "$samples/python/agent.py"
  echo "Python: syntax checked"
else
  echo "Python: skipped, there is no python3"
fi
