"""Writes the bill of materials of an installed component (SPDX 2.3), and installs the licences of the libraries that are linked into
its binaries. Versions and licence texts are those of the distribution's packages; a library whose licence is not known here is an
error. The only date is SOURCE_DATE_EPOCH.

    bill_of_materials.py library|devkit PREFIX VERSION FOLDER-OF-MAPS BINARY=HEADER-ONLY-LIBRARY,... INSTALLED-FILE..."""
import hashlib, json, os, re, shutil, subprocess, sys, time, uuid
from pathlib import Path

GCC = "GPL-3.0-or-later WITH GCC-exception-3.1"
KNOWN = ((r"/libgcc(_eh)?\.a$|/crt(begin|end)\.o$", "libgcc", GCC), (r"/lib(std|sup)c\+\+\.a$", "libstdc++", GCC),
         (r"/libssp(_nonshared)?\.a$", "libssp", GCC), (r"/CLI\.hpp$", "CLI11", "BSD-3-Clause"), (r"/json\.hpp$", "nlohmann-json", "MIT"),
         (r"^/usr/i686-w64-mingw32/lib/", "mingw-w64-runtime", "ZPL-2.1 AND LicenseRef-mingw-w64-parts"))
NAME, LICENCES, BILL = {
    "library": ("KELUtils", "licences", "KELUtils.spdx.json"),
    "devkit": ("KELUtils-devkit", "devkit/licences", "devkit/KELUtils-devkit.spdx.json")}[sys.argv[1]]
prefix, version, maps = Path(sys.argv[2]), sys.argv[3], Path(sys.argv[4])
headers = [use.split("=") for use in sys.argv[5].split(",") if use]
paths, own_id, author = [Path(name) for name in sys.argv[6:]], "SPDXRef-Package-" + NAME, "Organization: Tavrin Security"
components, relationships = {}, []

def dpkg_query(*arguments):
    return subprocess.run(["dpkg-query", *arguments], check=True, capture_output=True, text=True).stdout

def component_of(file):
    """The name of the component that a linked file belongs to; the first file of a component enters it."""
    found = [(name, licence) for pattern, name, licence in KNOWN if re.search(pattern, file)]
    if not found:
        sys.exit("%s becomes part of a binary, but its licence is not known in %s" % (file, __file__))
    name, licence = found[0]
    if name not in components:
        package = re.split("[:,]", dpkg_query("-S", file))[0]
        copyright_file = (Path("/usr/share/doc") / package).resolve() / "copyright"
        text = copyright_file.parent.name + ".txt"
        components[name] = {"licence": licence, "package": package, "copyright": copyright_file, "text": text,
                            "version": dpkg_query("-W", "-f=${Version}", package)}
        keep(copyright_file, text)
    return name

def keep(file, name):
    target = prefix / LICENCES / name
    target.parent.mkdir(exist_ok=True)
    shutil.copyfile(file, target)
    paths.append(target)

def parts_of(binary):
    """The linked files, by the linker's map: members of archives and start files; and header-only libraries."""
    linked = re.findall(r"^(/[^ (]+\.a)\(|^LOAD (/[^ ]+/(?:crt[a-z0-9]*|dllcrt[0-9])\.o)$", (maps / (binary + ".map")).read_text(), re.M)
    files = {os.path.normpath(archive or start) for archive, start in linked} | {header for name, header in headers if name == binary}
    return sorted({component_of(file) for file in sorted(files)})

def joined(names):
    return " AND ".join(dict.fromkeys(["MIT"] + [components[name]["licence"] for name in names]))

def identifier(kind, name):
    return "SPDXRef-%s-%s" % (kind, re.sub("[^A-Za-z0-9.]", "-", name.replace("+", "x")))

def relate(source, kind, target):
    relationships.append({"spdxElementId": source, "relationshipType": kind, "relatedSpdxElement": target})

def file_element(path):
    name, data = path.relative_to(prefix).as_posix(), path.read_bytes()
    element, binary = identifier("File", name), path in linked
    for part in (parts := linked.get(path, [])):
        relate(element, "STATIC_LINK", identifier("Package", part))
    relate(own_id, "CONTAINS", element)
    foreign = path.parent == prefix / LICENCES and path.suffix == ".txt"
    return {"SPDXID": element, "fileName": "./" + name, "copyrightText": "NOASSERTION" if binary or foreign else rights,
            "licenseConcluded": "NOASSERTION" if foreign else joined(parts),
            "checksums": [{"algorithm": kind, "checksumValue": hashlib.new(kind, data).hexdigest()} for kind in ("SHA1", "SHA256")]}

linked = {path: parts_of(path.name.split(".")[0]) for path in sorted(paths) if path.suffix in (".dll", ".exe", ".debug")}
keep("/usr/share/common-licenses/GPL-3", "GPL-3.txt")
own_licence = next(path for path in paths if path.name == "LICENSE")
rights = re.search("^Copyright.*", own_licence.read_text(), re.M).group()
relate("SPDXRef-DOCUMENT", "DESCRIBES", own_id)
files = [file_element(path) for path in sorted(set(paths))]
verification = hashlib.sha1("".join(sorted(file["checksums"][0]["checksumValue"] for file in files)).encode()).hexdigest()

def package_element(element, name, package_version, supplier, purl, licence, rest):
    reference = {"referenceCategory": "PACKAGE-MANAGER", "referenceType": "purl", "referenceLocator": purl}
    return {"SPDXID": element, "name": name, "versionInfo": package_version, "supplier": supplier, "downloadLocation": "NOASSERTION",
            "licenseConcluded": licence, "externalRefs": [reference], **rest}

own = package_element(own_id, NAME, version, author, "pkg:generic/tavrin/%s@%s" % (NAME, version), joined(sorted(components)), {
    "originator": author, "licenseDeclared": "MIT", "copyrightText": rights, "comment": "Licence texts: %s" % own_licence.relative_to(prefix),
    "packageVerificationCode": {"packageVerificationCodeValue": verification, "packageVerificationCodeExcludedFiles": ["./" + BILL]}})
others = [package_element(
    identifier("Package", name), name, part["version"], "Organization: Debian",
    "pkg:deb/debian/%s@%s?distro=bookworm" % (part["package"], part["version"].replace("+", "%2B")), part["licence"],
    {"filesAnalyzed": False, "copyrightText": "NOASSERTION", "comment": "Licence texts: %s/%s" % (LICENCES, part["text"])})
    for name, part in sorted(components.items())]
created = time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(int(os.environ.get("SOURCE_DATE_EPOCH", 315532800))))
(prefix / BILL).write_text(json.dumps({
    "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": NAME + "-" + version,
    "documentNamespace": uuid.uuid5(uuid.NAMESPACE_URL, verification).urn,
    "creationInfo": {"created": created, "creators": [author, "Tool: bill_of_materials.py-" + version]},
    "hasExtractedLicensingInfos": [{
        "licenseId": "LicenseRef-mingw-w64-parts", "name": "Parts of the MinGW-w64 runtime: public domain, and permissive licences",
        "extractedText": components["mingw-w64-runtime"]["copyright"].read_text()}],
    "packages": [own] + others, "files": files, "relationships": relationships}, indent=1) + "\n")
