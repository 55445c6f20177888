// The handles of the test process.
#pragma once

#include <windows.h>

#include <cstdint>

namespace support {

/// How many handles are open. (The platform's own count is always 0 under Wine.)
inline DWORD OpenHandles() {
  DWORD count = 0, flags = 0;
  for (std::uintptr_t value = 4; value < 0x4000; value += 4) {
    count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0;
  }
  return count;
}

}  // namespace support
