// A DLL that does nothing, of about the size of the library: a block of bytes stands for its code.
#include <windows.h>

#include <cstdint>

#define BYTES_16 0x0f, 0x1e, 0x2d, 0x3c, 0x4b, 0x5a, 0x69, 0x78, 0x87, 0x96, 0xa5, 0xb4, 0xc3, 0xd2, 0xe1, 0xf0
#define BYTES_256                                                                                               \
  BYTES_16, BYTES_16, BYTES_16, BYTES_16, BYTES_16, BYTES_16, BYTES_16, BYTES_16, BYTES_16, BYTES_16, BYTES_16, \
      BYTES_16, BYTES_16, BYTES_16, BYTES_16, BYTES_16
#define BYTES_4K                                                                                                \
  BYTES_256, BYTES_256, BYTES_256, BYTES_256, BYTES_256, BYTES_256, BYTES_256, BYTES_256, BYTES_256, BYTES_256, \
      BYTES_256, BYTES_256, BYTES_256, BYTES_256, BYTES_256, BYTES_256
#define BYTES_64K                                                                                               \
  BYTES_4K, BYTES_4K, BYTES_4K, BYTES_4K, BYTES_4K, BYTES_4K, BYTES_4K, BYTES_4K, BYTES_4K, BYTES_4K, BYTES_4K, \
      BYTES_4K, BYTES_4K, BYTES_4K, BYTES_4K, BYTES_4K

extern "C" __declspec(dllexport) const std::uint8_t idle_bytes[] = {BYTES_64K, BYTES_64K, BYTES_64K, BYTES_64K};

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD, void*) { return TRUE; }
