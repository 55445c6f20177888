"""KELUtils.cs: the P/Invoke declarations of the interface."""

HEAD = """// The exports, result codes and records of KELUtils. Written from KELUtils.h %s: do not change it.
//
// The library has 32 bits: compile for x86, not "any CPU". Load it once by its full path with LoadLibraryEx before the first
// call; the declarations then find it by its name. Texts are in the code page of Windows. A byte[] receives a
// zero-terminated text, and goes with its size.
using System.Runtime.InteropServices;

public static class KELUtils
{
"""
IMPORT = ('    [DllImport("KELUtils.dll", CallingConvention = CallingConvention.StdCall, CharSet = CharSet.Ansi,\n'
          "               ExactSpelling = true, BestFitMapping = false, ThrowOnUnmappableChar = true)]\n")
VALUES = {"int32_t": "int", "uint32_t": "uint", "uint8_t": "byte", "KE_RESULT": "uint"}


def parameter_type(parameter, following):
    """A text with a length of its own is bytes: the length counts them."""
    kind = parameter["type"]
    if kind == "const char*":
        return "byte[]" if following == parameter["name"] + "Length" else "string"
    if kind == "char*":
        return "byte[]"
    if kind.endswith("*"):
        value = kind.replace("const ", "")[:-1]
        return "ref " + VALUES.get(value, value)
    return VALUES[kind]


def field(declared):
    kind, _, count = declared["type"].partition("[")
    if not count:
        return "        public %s %s; // %s\n" % (VALUES[kind], declared["name"], declared["text"])
    return ("        [MarshalAs(UnmanagedType.ByValArray, SizeConst = %s)]\n        public byte[] %s; // %s\n"
            % (count.rstrip("]"), declared["name"], declared["text"]))


def function(declared):
    parameters = declared["parameters"]
    following = [parameter["name"] for parameter in parameters[1:]] + [""]
    listed = ", ".join("%s %s" % (parameter_type(parameter, name), parameter["name"]) for parameter, name in zip(parameters, following))
    return "    /// <summary>%s.</summary>\n%s    public static extern %s %s(%s);\n\n" % (
        declared["text"].replace("&", "&amp;").replace("<", "&lt;"), IMPORT, VALUES[declared["returns"]], declared["name"], listed)


def render(interface):
    text = HEAD % interface["version"]
    for name, code in interface["codes"].items():
        text += "    public const uint %s = %d; // %s\n" % (name, code["value"], code["text"])
    for record in interface["records"]:
        text += "\n    [StructLayout(LayoutKind.Sequential)]\n    public struct %s // %s\n    {\n%s    }\n" % (
            record["name"], record["text"], "".join(map(field, record["fields"])))
    return text + "\n" + "".join(map(function, interface["functions"])).rstrip() + "\n}\n"
