#!/usr/bin/env bash
# Packs a copy of the tree in another folder too, and compares: the library, its debug information and its import libraries, and the
# packages must be the same, byte for byte. Then checks the package's bill of materials. With --quick the copy compiles the library
# only, and takes kelctl as it is.
set -euo pipefail
cd "$(dirname "$0")/.."

quick=no
[ "${1:-}" != --quick ] || quick=yes
first=$PWD/build/release
tree=$PWD/build/another/folder
second=$tree/build/release

scripts/package.sh
rm -rf build/another
mkdir -p "$tree"
tar -c --exclude=./build --exclude=./.git . | tar -x -C "$tree"

# Another user's habits too: file mode mask, time zone, language. The settings of the product are those of the first build.
(
  cd "$tree"
  umask 077
  export TZ=Asia/Tokyo LC_ALL=C.UTF-8
  mapfile -t settings < <(cmake -N -LA "$first" | sed -n 's/^\(KELUTILS_[A-Z_]*_\(BLOB:STRING\|ADDRESS:STRING\|INSTALL_PATH:BOOL\)=.*\)/-D\1/p')
  options=("${settings[@]}" -DKELUTILS_BUILD_TESTS=OFF -DKELUTILS_BUILD_DEVKIT=OFF)
  if [ $quick = no ]; then
    scripts/package.sh "${options[@]}"
  else
    cmake --preset release "${options[@]}" &&
      cmake --build --preset release --target KELUtils KELUtilsMsvcLibrary &&
      cp -p "$first/bin/kelctl.exe" "$second/bin/" &&
      cp -p "$first/generated/kelctl.map" "$second/generated/" &&
      scripts/package.sh --no-build
  fi
) >build/another/output.txt 2>&1 || { cat build/another/output.txt; exit 1; }

bad=0
archive=$(basename "$first"/package/*.zip)
for file in bin/KELUtils.dll bin/KELUtils.dll.debug lib/libKELUtils.dll.a lib/KELUtils.lib "package/$archive"; do
  cmp "$first/$file" "$second/$file" || { echo "not reproducible: $file"; bad=1; }
done
if [ $bad -ne 0 ]; then
  for build in "$first" "$second"; do
    unzip -q -o "$build/package/$archive" -d "build/another/$(cksum <<<"$build" | cut -d' ' -f1)"
  done
  diff -rq build/another/[0-9]*/ | head -n 20 || true
fi

# The bill of materials tells what lies in the package, unpacked.
unzip -q "$first/package/$archive" -d build/another/package
cmake -DPACKAGE="$PWD/build/another/package/${archive%.zip}" -P scripts/package/check_bill_of_materials.cmake || bad=1
[ $bad -ne 0 ] || rm -rf build/another
exit $bad
