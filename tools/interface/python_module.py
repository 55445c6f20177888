"""kelutils.py: the interface as declarations for ctypes, and the comparison of that module with the interface."""

import ctypes
import importlib.util

HEAD = '''"""The exports, result codes and records of KELUtils. Written from KELUtils.h %s: do not change it.

    library = kelutils.load("C:\\\\Orvane\\\\KELUtils\\\\KELUtils.dll")
    result = library.KE_GetAgentID(buffer, len(buffer))

Needs a 32-bit Python on Windows. Texts are bytes, in the code page of Windows ("mbcs").
"""

import ctypes
import os
import struct
from ctypes import POINTER, c_char, c_char_p, c_int32, c_uint8, c_uint32

'''
TAIL = '''

def load(path):
    """Loads the library and declares its exports."""
    if struct.calcsize("P") != 4:
        raise OSError("KELUtils.dll has 32 bits: run this with a 32-bit Python")
    library = ctypes.WinDLL(os.path.abspath(path))  # WinDLL: the standard calling convention of Windows
    for name, (result, parameters) in FUNCTIONS.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = [kind for _, kind in parameters]
    return library
'''
VALUES = {"int32_t": "c_int32", "uint32_t": "c_uint32", "uint8_t": "c_uint8", "KE_RESULT": "c_uint32", "char": "c_char"}


def type_name(kind):
    kind = kind.replace("const ", "")
    if kind == "char*":
        return "c_char_p"
    if kind.endswith("*"):
        return "POINTER(%s)" % type_name(kind[:-1])
    if kind.endswith("]"):
        return "%s * %s" % (type_name(kind[:kind.index("[")]), kind[kind.index("[") + 1:-1])
    return VALUES.get(kind, kind)


def render(interface):
    text = HEAD % interface["version"]
    for name, code in interface["codes"].items():
        text += "%s = %d  # %s\n" % (name, code["value"], code["text"])
    for record in interface["records"]:
        fields = "".join('        ("%s", %s),  # %s\n' % (f["name"], type_name(f["type"]), f["text"]) for f in record["fields"])
        text += '\n\nclass %s(ctypes.Structure):\n    """%s"""\n\n    _fields_ = [\n%s    ]\n' % (record["name"], record["text"], fields)
    text += "\n\n# {name: (type of the result, ((name of a parameter, its type), ...))}\nFUNCTIONS = {\n"
    for function in interface["functions"]:
        parameters = "".join('("%s", %s), ' % (p["name"], type_name(p["type"])) for p in function["parameters"])
        text += '    "%s": (%s, (%s)),\n' % (function["name"], type_name(function["returns"]), parameters.rstrip())
    return text + "}\n" + TAIL


def differences(interface, folder):
    """Compares the written module in ctypes with the interface as libclang measured it."""
    location = importlib.util.spec_from_file_location("kelutils", folder / "kelutils.py")
    module = importlib.util.module_from_spec(location)
    location.loader.exec_module(module)
    bad = []

    def expect(item, found, expected):
        if found != expected:
            bad.append("kelutils.py: %s: %s in place of %s" % (item, found, expected))

    def stack(kind):
        return 4 if kind is ctypes.c_char_p or hasattr(kind, "contents") else ctypes.sizeof(kind)

    for name, code in interface["codes"].items():
        expect(name, getattr(module, name, None), code["value"])
    for record in interface["records"]:
        made = getattr(module, record["name"])
        expect(record["name"], ctypes.sizeof(made), record["size"])
        for field in record["fields"]:
            expect(field["name"], getattr(made, field["name"]).offset, field["offset"])
    expect("exports", list(module.FUNCTIONS), [function["name"] for function in interface["functions"]])
    for function in interface["functions"]:
        _, parameters = module.FUNCTIONS[function["name"]]
        expect(function["name"], [name for name, _ in parameters], [parameter["name"] for parameter in function["parameters"]])
        expect(function["name"], sum(stack(kind) for _, kind in parameters), function["stackBytes"])
    return bad
