// A DLL that does nothing, of about the size of the library: a block of bytes replaces its code.
#include <windows.h>

asm(".section .rdata\n"
    ".globl _idle_bytes\n"
    "_idle_bytes: .fill 0x40000, 1, 0x5a\n"
    ".text\n");
extern "C" __declspec(dllexport) const char idle_bytes[];

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, void*) { return TRUE; }
