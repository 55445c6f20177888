#!/usr/bin/env bash
# Packs a copy of the tree in another folder too, and compares: the library, its debug information and its import libraries, and the
# packages must be the same, byte for byte. Then checks the package's bill of materials. The copy compiles the library only, and takes
# kelctl as it is; with --whole it compiles both.
set -euo pipefail
cd "$(dirname "$0")/../.."

first=$PWD/build/release
tree=$PWD/build/another/folder
second=$tree/build/release
scripts/package.sh --no-build
rm -rf build/another
mkdir -p "$tree"
tar -c --exclude=./build --exclude=./.git . | tar -x -C "$tree"

# With another user's habits: file mode mask, time zone, language. The settings of the product are those of the first build. Compiler
# caches are off: their objects differ.
(
  SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
  cd "$tree"
  umask 077
  export SOURCE_DATE_EPOCH TZ=Asia/Tokyo LC_ALL=C.UTF-8 CMAKE_CXX_COMPILER_LAUNCHER=''
  mapfile -t settings < <(cmake -N -LA "$first" | sed -n 's/^\(KELUTILS_[A-Z_]*_\(BLOB:STRING\|ADDRESS:STRING\|INSTALL_PATH:BOOL\)=.*\)/-D\1/p')
  cmake --preset release "${settings[@]}" -DKELUTILS_BUILD_TESTS=OFF -DKELUTILS_BUILD_DEVKIT=OFF
  if [ "${1:-}" = --whole ]; then cmake --build --preset release; else
    cmake --build --preset release --target KELUtils KELUtilsMsvcLibrary interface
    cp -p "$first/bin/kelctl.exe" "$second/bin/"
    cp -p "$first/generated/kelctl.map" "$second/generated/"
  fi
  scripts/package.sh --no-build
) >build/another/output.txt 2>&1 || { cat build/another/output.txt; exit 1; }

archive=$(basename "$first"/package/*.zip .zip)
bad=0
for file in bin/KELUtils.dll bin/KELUtils.dll.debug lib/libKELUtils.dll.a lib/KELUtils.lib "package/$archive.zip"; do
  cmp "$first/$file" "$second/$file" || { echo "not reproducible: $file"; bad=1; }
done

# The bill of materials against the package, unpacked: every file with its checksum, every relationship, the parts of the binaries.
unzip -q "$first/package/$archive.zip" -d build/another/package
/usr/bin/python3 - "build/another/package/$archive" <<'CHECK' || bad=1
import hashlib, json, pathlib, sys
root = pathlib.Path(sys.argv[1])
bill = root / "share/doc/KELUtils/KELUtils.spdx.json"
content = json.loads(bill.read_text())
listed = {(f["fileName"], c["checksumValue"]) for f in content["files"] for c in f["checksums"]}
packed = {("./" + p.relative_to(root).as_posix(), hashlib.new(kind, p.read_bytes()).hexdigest())
          for p in root.rglob("*") if p.is_file() and p != bill for kind in ("sha1", "sha256")}
assert listed == packed, sorted(listed ^ packed)
elements = ["SPDXRef-DOCUMENT"] + [e["SPDXID"] for e in content["packages"] + content["files"]]
assert len(elements) == len(set(elements)), "identifiers repeat"
ends = {r[end] for r in content["relationships"] for end in ("spdxElementId", "relatedSpdxElement")}
assert ends == set(elements), ends ^ set(elements)
for package in content["packages"]:
    assert package["versionInfo"][0].isdigit() and (root / package["comment"].partition(": ")[2]).is_file(), package
runtime = {"libgcc", "libstdcxx", "mingw-w64-runtime"}
for binary, parts in (("bin-KELUtils.dll", runtime), ("bin-kelctl.exe", runtime | {"libssp", "CLI11", "nlohmann-json"})):
    found = {r["relatedSpdxElement"][len("SPDXRef-Package-"):] for r in content["relationships"]
             if r["spdxElementId"] == "SPDXRef-File-" + binary and r["relationshipType"] == "STATIC_LINK"}
    assert found == parts, (binary, found)
CHECK
[ $bad -ne 0 ] || rm -rf build/another
exit $bad
