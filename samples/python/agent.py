"""KELUtils from Python: reads the agent ID, enciphers a setting, schedules a job.

    python agent.py [C:\\Orvane\\KELUtils\\KELUtils.dll]

Needs a 32-bit Python on Windows. Without an argument the library is looked for in the folder KELUtils beside that of this file.
"""

import ctypes
import os
import struct
import sys
from ctypes import POINTER, byref, c_char_p, c_int32, c_uint32, create_string_buffer

KE_SUCCESS = 0
KE_BUFFER_TOO_SMALL = 1778
KE_STORE_UNUSABLE = 1782


def load(path):
    """Loads the library and declares the functions that are used, as KELUtils.h does."""
    if struct.calcsize("P") != 4:
        raise OSError("KELUtils.dll has 32 bits: run this with a 32-bit Python")
    library = ctypes.WinDLL(os.path.abspath(path))  # WinDLL: the standard calling convention of Windows
    for name, parameters in (
        ("KE_GetAgentID", [c_char_p, c_int32]),
        ("KE_EncryptSetting", [c_char_p, c_int32, c_char_p, POINTER(c_int32)]),
        ("KE_SetPeriodicTask", [c_char_p, c_char_p, c_char_p, c_int32, c_int32, c_int32]),
    ):
        function = getattr(library, name)
        function.restype = c_uint32
        function.argtypes = parameters
    return library


def check(call, result):
    if result != KE_SUCCESS:
        raise OSError("%s: error %d" % (call, result))


def agent_id(library):
    """A getter wants a buffer that is larger than its value, and does not tell the value's length."""
    result, size = KE_BUFFER_TOO_SMALL, 64
    while result == KE_BUFFER_TOO_SMALL and size <= 65536:
        buffer = create_string_buffer(size)
        result = library.KE_GetAgentID(buffer, size)
        size *= 4
    if result == KE_STORE_UNUSABLE:
        raise OSError("this computer has no agent ID yet")
    check("KE_GetAgentID", result)
    return buffer.value.decode("mbcs")  # the system's code page


def setting(library, plain):
    """With a null output the library tells the size that it needs. What it writes has no terminating zero."""
    text, size = plain.encode("mbcs"), c_int32(0)
    result = library.KE_EncryptSetting(text, len(text), None, byref(size))
    if result != KE_BUFFER_TOO_SMALL:
        raise OSError("KE_EncryptSetting: error %d" % result)
    output = create_string_buffer(size.value)
    check("KE_EncryptSetting", library.KE_EncryptSetting(text, len(text), output, byref(size)))
    return output.raw[: size.value].decode("ascii")


def main():
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "KELUtils", "KELUtils.dll")
    library = load(sys.argv[1] if len(sys.argv) > 1 else beside)
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
