#!/usr/bin/env bash
# Unpacks both archives of the package into an empty folder, builds the samples against it and runs them under Wine, in a product tree
# of nothing else.
set -euo pipefail
cd "$(dirname "$0")/../.."
. scripts/wine.sh

work=$PWD/build/samples
rm -rf "$work"
mkdir -p "$work/unpacked"
for archive in build/release/package/*.zip; do unzip -q "$archive" -d "$work/unpacked"; done
package=$(echo "$work"/unpacked/*)
product=$package/devkit
mkdir "$product/Sample"
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' build/release/CMakeCache.txt)
prefix=i686-w64-mingw32
strict=(-std=c89 -pedantic -Wall -Wextra -Werror)

fail() { echo "$*"; exit 1; }
[ "$(basename "$package")" = "KELUtils-$version-win32-dev" ] || fail "the package's folder is $(basename "$package")"

# As a user does, with find_package.
for sample in c cpp; do
  cmake -S "$package/samples/$sample" -B "$work/$sample" -G Ninja -DCMAKE_PREFIX_PATH="$package" -DCMAKE_SYSTEM_NAME=Windows \
    -DCMAKE_C_COMPILER=$prefix-gcc-win32 -DCMAKE_CXX_COMPILER=$prefix-g++-win32 \
    -DCMAKE_C_FLAGS="${strict[*]}" -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror"
  cmake --build "$work/$sample"
done

# The C sample by hand, with pkg-config.
export PKG_CONFIG_LIBDIR=$package/lib/pkgconfig PKG_CONFIG_DONT_DEFINE_PREFIX=1
[ "$(pkg-config --modversion KELUtils)" = "$version" ] || fail "pkg-config reports another version"
# shellcheck disable=SC2046  # several words
$prefix-gcc-win32 "${strict[@]}" -o "$product/KELUtils/by_pkg_config.exe" "$package/samples/c/agent.c" $(pkg-config --cflags --libs KELUtils)

# A small program by a linker of the MSVC family, with the library that find_package has for those.
cmake -S scripts/check/other_linker -B "$work/other" -G Ninja -DCMAKE_PREFIX_PATH="$package" -DEXPECTED_VERSION="$version" \
  -DOUTPUT="$work/import-library.txt"
$prefix-gcc-win32 -I "$package/include" -c -o "$work/caller.obj" scripts/check/other_linker/caller.c
printf 'LIBRARY kernel32.dll\nEXPORTS\n  ExitProcess@4\n' >"$work/kernel32.def"
llvm-dlltool -m i386 -k -d "$work/kernel32.def" -l "$work/kernel32.lib"
lld-link /nologo /subsystem:console /entry:start /safeseh:no "/out:$product/KELUtils/by_other_linker.exe" \
  "$work/caller.obj" "$(cat "$work/import-library.txt")" "$work/kernel32.lib"

# C# and Python cannot run: there is no 32-bit .NET or Python for Windows here. C# is compiled, and the size of its records compared.
mcs -warnaserror -platform:x86 "-out:$work/Agent.exe" "$package/samples/csharp/Agent.cs" "$package/bindings/KELUtils.cs"
size_of='System.Runtime.InteropServices.Marshal.SizeOf'
echo "class Sizes { static int Main() { return $size_of(typeof(KELUtils.KE_PROXY)) == 776 && $size_of(typeof(KELUtils.KE_TIME)) == 24 ? 0 : 1; } }" >"$work/sizes.cs"
mcs "-out:$work/sizes.exe" "$work/sizes.cs" "$package/bindings/KELUtils.cs"
mono "$work/sizes.exe" || fail "the records of KELUtils.cs have other sizes"
PYTHONPATH=$package/bindings /usr/bin/python3 -B - "$package/samples/python/agent.py" <<'CHECK' || fail "the Python sample calls what kelutils.py does not declare"
import ast, sys
import kelutils
used = {node.attr for node in ast.walk(ast.parse(open(sys.argv[1]).read())) if isinstance(node, ast.Attribute) and node.attr.startswith("KE_")}
assert used and used <= kelutils.FUNCTIONS.keys() | vars(kelutils).keys(), used
CHECK

cp "$package/bin/KELUtils.dll" "$package/bin/kelctl.exe" "$work/c/linked_agent.exe" "$product/KELUtils/"
cp "$work/cpp/loading_agent.exe" "$product/Sample/"
wine() { scripts/run_wine.sh "$product/$1" "${@:2}"; }

# run_sample PROGRAM JOB: prints the agent's identity, a setting that the library decrypts, and the job, which then exists.
run_sample() {
  local output setting
  output=$(wine "$1" 2>&1) || fail "$1 failed: $output"
  grep -qx 'agent ID: sample-agent' <<<"$output" || fail "$1 does not show the identity: $output"
  setting=$(sed -n '/^setting of/,/^job/p' <<<"$output" | sed '$d; s/^setting of.*: //')
  [ "$(wine KELUtils/kelctl.exe setting decrypt "$setting")" = secret ] || fail "the setting of $1 cannot be decrypted: $output"
  output=$(wine Scheduler/zumat.exe -list)
  grep -q "^$2 .*KEPLPMNG.*SAMPLE" <<<"$output" || fail "$1 has left no job $2: $output"
  rm -f "$product/Scheduler/Config/jobs.json"
}

# Without an identity they say so and fail.
for sample in KELUtils/linked_agent.exe Sample/loading_agent.exe; do
  output=$(wine $sample 2>&1) && fail "$sample succeeds without an agent ID"
  grep -q 'no agent ID yet' <<<"$output" || fail "$sample without an agent ID: $output"
done
! wine KELUtils/by_other_linker.exe || fail "a program by another linker succeeds without an agent ID"
wine KELUtils/kelctl.exe set agent-id sample-agent
run_sample KELUtils/linked_agent.exe 9001
run_sample KELUtils/by_pkg_config.exe 9001
run_sample Sample/loading_agent.exe 9002
wine KELUtils/by_other_linker.exe || fail "a program by another linker fails"
