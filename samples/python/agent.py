"""KELUtils from Python: reads the agent ID, encrypts a setting, schedules a job.

    python agent.py [C:\\Orvane\\KELUtils\\KELUtils.dll]

Needs a 32-bit Python on Windows. kelutils.py, which declares every export, is in the folder bindings of the package, or next to this
file. Without an argument the library is searched for in the folder KELUtils next to that of this file.
"""

import os
import sys
from ctypes import byref, c_int32, create_string_buffer

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.append(os.path.join(HERE, "..", "..", "bindings"))
import kelutils  # noqa: E402


def check(call, result):
    if result != kelutils.KE_SUCCESS:
        raise OSError("%s: error %d" % (call, result))


def agent_id(library):
    """A getter needs a buffer that is larger than its value, and does not return the value's length."""
    result, size = kelutils.KE_BUFFER_TOO_SMALL, 64
    while result == kelutils.KE_BUFFER_TOO_SMALL and size <= 65536:
        buffer = create_string_buffer(size)
        result = library.KE_GetAgentID(buffer, size)
        size *= 4
    if result == kelutils.KE_STORE_UNUSABLE:
        raise OSError("this computer has no agent ID yet")
    check("KE_GetAgentID", result)
    return buffer.value.decode("mbcs")  # the system's code page


def setting(library, plain):
    """With a null output the library returns the required size. Its output has no terminating zero."""
    text, size = plain.encode("mbcs"), c_int32(0)
    result = library.KE_EncryptSetting(text, len(text), None, byref(size))
    if result != kelutils.KE_BUFFER_TOO_SMALL:
        raise OSError("KE_EncryptSetting: error %d" % result)
    output = create_string_buffer(size.value)
    check("KE_EncryptSetting", library.KE_EncryptSetting(text, len(text), output, byref(size)))
    return output.raw[: size.value].decode("ascii")


def main():
    library = kelutils.load(sys.argv[1] if len(sys.argv) > 1 else os.path.join(HERE, "..", "KELUtils", "KELUtils.dll"))
    print("agent ID:", agent_id(library))
    text = setting(library, "secret")
    print("setting of %d characters: %s" % (len(text), text))
    check("KE_SetPeriodicTask", library.KE_SetPeriodicTask(b"KEPLPMNG", b"SAMPLE", b"-check", 9004, 12 * 60, 0))
    print("job 9004 is scheduled")


if __name__ == "__main__":
    try:
        main()
    except OSError as error:
        sys.exit(str(error))
