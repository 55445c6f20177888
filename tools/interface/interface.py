#!/usr/bin/python3
"""The interface of KELUtils, read from include/KELUtils.h with libclang.

    interface.py write FOLDER VERSION   writes KELUtils.json, KELUtils.cs and kelutils.py
    interface.py update                 writes the tracked texts: the function types in the header, and src/KELUtils.def
    interface.py check [BUILD]          compares header, .def file, documents and tools; with BUILD also the built files there
"""

import json
import re
import subprocess
import sys
from pathlib import Path

import clang.cindex
from clang.cindex import CursorKind

import csharp
import python_module

ROOT = Path(__file__).resolve().parents[2]
HEADER = ROOT / "include" / "KELUtils.h"
DEFINITION = ROOT / "src" / "KELUtils.def"
TYPES = re.compile(r"(?<=/\* clang-format off \*/\n).*?(?=/\* clang-format on \*/\n)", re.S)


def fail(text):
    sys.exit("interface: " + text)


def plain(comment):
    """The text of a comment, without its frame."""
    return re.sub(r"^\s*(/\*\*<?|\*/|\*)? ?|\s*\*/$", "", comment or "", flags=re.M).strip()


def one_line(text):
    return " ".join(text.split())


def parse_header():
    clang.cindex.Config.set_library_file("libclang-14.so.1")
    # The compiler's own headers are not installed with libclang: a stdint.h of the target's sizes is enough.
    stdint = "#pragma once\ntypedef unsigned char uint8_t; typedef int int32_t; typedef unsigned uint32_t;"
    unit = clang.cindex.Index.create().parse(
        str(HEADER), args=["-x", "c", "-std=c89", "--target=i686-w64-mingw32", "-nostdinc", "-I/generated"],
        unsaved_files=[("/generated/stdint.h", stdint)])
    errors = [str(found) for found in unit.diagnostics if found.severity >= 2]
    if errors:
        fail("\n".join(errors))
    return [cursor for cursor in unit.cursor.get_children() if Path(str(cursor.location.file)).parent == HEADER.parent]


def entries(text, pattern):
    """The entries of a contract that begin with the pattern, each with its text up to the next one."""
    found = re.findall(pattern + r"((?:.|\n)*?)(?=\n\s*(?:@|- |\n)|\Z)", text, re.M)
    return [entry[:-1] + (one_line(entry[-1]),) for entry in found]


def references(mark, text, lists):
    """The lists that a text refers to."""
    names = re.findall(mark + r" (ke_\w+)", text)
    unknown = [name for name in names if name not in lists]
    if unknown:
        fail("no list of results above: " + ", ".join(unknown))
    return names


def result_lists(header):
    """The lists at the heads of the groups: {name: {code: cause}}."""
    lists = {}
    for name, body in re.findall(r"@section (ke_\w+) [^\n]*\n((?:.(?!@section|@\{))*)", header, re.S):
        lists[name] = dict(entries(plain(body), r"^- (KE_\w+): "))
        for other in references(r"- @ref", body, lists):
            for code, cause in lists[other].items():
                lists[name][code] = "; ".join(filter(None, [cause, lists[name].get(code)]))
    return lists


def results_of(contract, lists, codes):
    """{code: cause} of one export, in the order of the codes."""
    own = entries(contract, r"@retval (KE_\w+) *")
    if own and own[0][0] == "KE_SUCCESS":
        return dict(own)
    results = {"KE_SUCCESS": "", "KE_EXCEPTION": "an unexpected failure"}
    for name in references("@ref", contract, lists):
        results.update(lists[name])
    for code in re.findall(r"but never (KE_\w+)", contract):
        if results.pop(code, None) is None:
            fail("\"but never %s\", which is in no list there" % code)
    for code, cause in own:
        results[code] = "; ".join(filter(None, [results.get(code), cause]))
    unknown = results.keys() - codes.keys()
    if unknown:
        fail("no result codes: " + ", ".join(sorted(unknown)))
    return {code: results[code] for code in codes if code in results}


def parameters_of(cursor, contract):
    described = {}
    for direction, names, text in entries(contract, r"@param(?:\[([a-z,]+)\])? +([\w,]+) +"):
        for name in names.split(","):
            described[name] = {"direction": direction or "in", "text": text}
    parameters = []
    for argument in cursor.get_arguments():
        if argument.spelling not in described:
            fail("%s: no @param for %s" % (cursor.spelling, argument.spelling))
        parameters.append({"name": argument.spelling, "type": argument.type.spelling.replace(" *", "*"),
                           "bytes": max(4, argument.type.get_size()), **described[argument.spelling]})
    return parameters


def documented_codes():
    """{code: (meaning, what to do)} of docs/operations.md."""
    rows = re.findall(r"^\| \d+ \| `(KE_\w+)` \| (.+) \| (.+) \|$", (ROOT / "docs/operations.md").read_text(), re.M)
    return {row[0]: tuple(text.replace("`", "") for text in row[1:]) for row in rows}


def read_interface(version):
    cursors = parse_header()
    codes, records, functions, contracts = {}, [], [], {}
    lists = result_lists(HEADER.read_text())
    for cursor in cursors:
        if cursor.kind == CursorKind.ENUM_DECL:
            codes.update({value.spelling: {"value": value.enum_value, "text": one_line(plain(value.raw_comment)),
                                           "remedy": documented_codes().get(value.spelling, ("", ""))[1]}
                          for value in cursor.get_children()})
        elif cursor.kind == CursorKind.STRUCT_DECL:
            records.append({"name": cursor.spelling, "size": cursor.type.get_size(), "text": one_line(plain(cursor.raw_comment)), "fields": [
                {"name": field.spelling, "type": field.type.spelling, "offset": field.get_field_offsetof() // 8,
                 "text": one_line(plain(field.raw_comment))} for field in cursor.type.get_fields()]})
        elif cursor.kind == CursorKind.FUNCTION_DECL:
            contract = plain(cursor.raw_comment)
            if not contract:
                fail("%s: no contract" % cursor.spelling)
            brief = one_line(re.split(r"\.\s|\.$|:\n|\n@", contract)[0])
            copied = re.search(r"@copydetails (\w+)", contract)
            if copied and copied.group(1) not in contracts:
                fail("%s: no contract of %s above" % (cursor.spelling, copied.group(1)))
            contract = contracts[cursor.spelling] = contracts[copied.group(1)] if copied else contract
            parameters = parameters_of(cursor, contract)
            is_result = cursor.result_type.spelling == "KE_RESULT"
            functions.append({
                "name": cursor.spelling, "returns": cursor.result_type.spelling, "text": brief, "parameters": parameters,
                "stackBytes": sum(parameter.pop("bytes") for parameter in parameters),
                "results": results_of(contract, lists, codes) if is_result else {},
                "otherResults": "any other value" in contract})
    return {"library": "KELUtils.dll", "version": version, "callingConvention": "stdcall",
            "codes": codes, "records": records, "functions": functions}


def function_types(interface):
    for function in interface["functions"]:
        parameters = ", ".join("%s %s" % (p["type"], p["name"]) for p in function["parameters"])
        yield "typedef %s(KE_API* %s_t)(%s);\n" % (function["returns"], function["name"], parameters or "void")


def kept_files(interface):
    """The tracked generated texts: {path: content}."""
    header, definition = HEADER.read_text(), DEFINITION.read_text()
    exports = sorted("  %s@%d\n" % (f["name"], f["stackBytes"]) for f in interface["functions"])
    return {HEADER: TYPES.sub(lambda _: "".join(function_types(interface)), header),
            DEFINITION: definition[:definition.index("EXPORTS\n") + 8] + "".join(exports)}


def tool(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def check(interface, build):
    bad = []

    def compare(place, expected, found):
        for word, names in (("lacks", set(expected) - set(found)), ("has", set(found) - set(expected))):
            bad.extend("%s %s %s" % (place, word, name if isinstance(name, str) else ", ".join(name)) for name in sorted(names))
        if len(found) != len(set(found)):
            bad.append(place + " names something twice")

    for path, content in kept_files(interface).items():
        if path.read_text() != content:
            bad.append("%s does not match its declarations: run tools/interface/interface.py update" % path.relative_to(ROOT))
    names = [function["name"] for function in interface["functions"]]
    codes = ["%d %s" % (code["value"], name) for name, code in interface["codes"].items()]

    def found(file, pattern):
        return re.findall(pattern, (ROOT / file).read_text(), re.M)

    table = re.search(r"^## The exports\n(.*?)^## ", (ROOT / "README.md").read_text(), re.M | re.S).group(1)
    compare("the table in README.md", names, re.findall(r"`(KE_\w+)`", table))
    if not re.match(r"\s*%d,? " % len(names), table):
        bad.append("README.md does not begin its table with the number of exports, %d" % len(names))
    compare("docs/operations.md", codes, [" ".join(row) for row in found("docs/operations.md", r"^\| (\d+) \| `(KE_\w+)` \|")])
    source = re.sub(r'"\s*"', "", (ROOT / "tools/kelctl/result_codes.cpp").read_text())
    texts = [(name, meaning, remedy) for name, (meaning, remedy) in documented_codes().items()]
    compare("tools/kelctl/result_codes.cpp", texts, re.findall(r'KELCTL_CODE\(\s*(KE_\w+),\s*"(.*?)",\s*"(.*?)"\)', source))
    definition = r"^\w.* KE_API (KE_\w+)\("
    compare("src/exports", names, sum((found(file, definition) for file in sorted((ROOT / "src/exports").glob("*_exports.cpp"))), []))
    for file in sorted((ROOT / "src").rglob("*.cpp")):
        if not file.name.endswith("_exports.cpp") and found(file, definition):
            bad.append("%s defines an export outside of src/exports" % file.relative_to(ROOT))
    sources = [file for folder in ("src", "include", "devkit") for file in (ROOT / folder).rglob("*") if file.is_file()]
    known = set(re.findall(r"KE_\w+", "".join(file.read_text(errors="replace") for file in sources)))
    for document in [ROOT / "README.md", ROOT / "CONTRIBUTING.md", *(ROOT / "docs").glob("*.md")]:
        named = set(found(document, r"`(KE_\w*[A-Za-z0-9])`")) - known - {"KE_Name", "KE_Name_t"}
        bad.extend("%s names %s, which does not exist" % (document.name, name) for name in sorted(named))
    if build:
        dump = tool("i686-w64-mingw32-objdump", "-p", str(build / "bin/KELUtils.dll"))
        compare("KELUtils.dll", names, re.findall(r"^\t\[ *\d+\] (?!\+base)(\S+)", dump, re.M))
        decorated = ["_%s@%d" % (function["name"], function["stackBytes"]) for function in interface["functions"]]
        for library in ("libKELUtils.dll.a", "KELUtils.lib"):
            symbols = tool("i686-w64-mingw32-nm", str(build / "lib" / library))
            compare(library, decorated, re.findall(r" T (_KE_\S+)", symbols))
        bad += python_module.differences(interface, build / "interface")
    return bad


def main(arguments):
    action = arguments[0] if arguments else ""
    if action == "write" and len(arguments) == 3:
        folder = Path(arguments[1])
        folder.mkdir(parents=True, exist_ok=True)
        interface = read_interface(arguments[2])
        for name, text in (("KELUtils.json", json.dumps(interface, indent=1) + "\n"), ("KELUtils.cs", csharp.render(interface)),
                           ("kelutils.py", python_module.render(interface))):
            (folder / name).write_text(text)
    elif action == "update" and len(arguments) == 1:
        for path, content in kept_files(read_interface("")).items():
            path.write_text(content)
    elif action == "check" and len(arguments) <= 2:
        bad = check(read_interface(""), Path(arguments[1]).resolve() if len(arguments) == 2 else None)
        if bad:
            fail("\n".join(bad))
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1:])
