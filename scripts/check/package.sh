#!/usr/bin/env bash
# Packs a copy of the tree in another folder too, and compares: the library, its debug information and its import libraries, and the
# packages must be the same, byte for byte. Then checks the content: bills of materials, links of the documents, checksums. The copy
# compiles the library only, and takes the other binaries as they are; with --whole it compiles all.
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
  cmake --preset release "${settings[@]}" -DKELUTILS_BUILD_TESTS=OFF
  if [ "${1:-}" = --whole ]; then cmake --build --preset release; else
    cmake --build --preset release --target KELUtils KELUtilsMsvcLibrary interface
    mkdir -p "$second/devkit"
    cp -p "$first"/bin/kelctl.exe* "$second/bin/"
    cp -p "$first"/devkit/*.{exe,dll} "$second/devkit/"
    cp -np "$first"/generated/*.map "$second/generated/"
  fi
  scripts/package.sh --no-build
) >build/another/output.txt 2>&1 || { cat build/another/output.txt; exit 1; }

bad=0
for file in bin/KELUtils.dll bin/KELUtils.dll.debug lib/libKELUtils.dll.a lib/KELUtils.lib package/SHA256SUMS; do
  cmp "$first/$file" "$second/$file" || { echo "not reproducible: $file"; bad=1; }
done
(cd "$first/package" && sha256sum --quiet -c SHA256SUMS && [ "$(wc -l <SHA256SUMS)" = 2 ]) || bad=1

# Each bill of materials against its archive: every file with its checksum, every relationship, the parts of the binaries. Then every link
# of the documents.
mkdir build/another/package
for archive in "$first"/package/*.zip; do unzip -qo "$archive" -d "build/another/package/$(basename "$archive" .zip)"; done
/usr/bin/python3 - build/another/package/*/* <<'CHECK' || bad=1
import hashlib, json, pathlib, re, sys
runtime = {"libgcc", "libstdcxx", "mingw-w64-runtime"}
linked = {"bin-KELUtils.dll": runtime, "bin-kelctl.exe": runtime | {"libssp", "CLI11", "nlohmann-json"},
          "devkit-Scheduler-zumat.exe": runtime | {"libssp", "nlohmann-json"}}
names = set()
for root in map(pathlib.Path, sys.argv[1:]):
    (bill,) = root.rglob("*.spdx.json")
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
        assert package["externalRefs"][0]["referenceLocator"].startswith("pkg:"), package
    binaries = {r["spdxElementId"][len("SPDXRef-File-"):] for r in content["relationships"] if r["relationshipType"] == "STATIC_LINK"}
    for binary in linked.keys() & binaries:
        found = {r["relatedSpdxElement"][len("SPDXRef-Package-"):] for r in content["relationships"]
                 if r["spdxElementId"] == "SPDXRef-File-" + binary and r["relationshipType"] == "STATIC_LINK"}
        assert found == linked[binary], (binary, found)
    names |= {name for name, _ in packed} | binaries & linked.keys()
for needed in ["./README.md", "./docs/reference/index.html", "./bin/kelctl.exe.debug", *linked]:
    assert needed in names, needed
for root in map(pathlib.Path, sys.argv[1:]):
    for document in root.rglob("*.md"):
        text = re.sub(r"^ *```.*?^ *```|`[^`\n]*`", "", document.read_text(), flags=re.M | re.S)
        for path in re.findall(r"\]\(([^)#]+)", text):
            assert (document.parent / path).exists(), (document, path)
CHECK
[ $bad -ne 0 ] || rm -rf build/another
exit $bad
