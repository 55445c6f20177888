// The handles and slots of the test process.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

namespace support {

/// How many handles are open. (The platform's own count is always 0 under Wine.)
inline DWORD OpenHandles() {
  DWORD count = 0, flags = 0;
  for (std::uintptr_t value = 4; value < 0x4000; value += 4) {
    count += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0;
  }
  return count;
}

/// How many slots can still be had: of thread-local storage, or with the other two functions of fiber-local storage.
inline std::size_t FreeSlots(DWORD(WINAPI* take)() = TlsAlloc, BOOL(WINAPI* giveBack)(DWORD) = TlsFree) {
  std::vector<DWORD> slots;
  for (DWORD slot; (slot = take()) != TLS_OUT_OF_INDEXES;) slots.push_back(slot);
  for (const DWORD slot : slots) giveBack(slot);
  return slots.size();
}

}  // namespace support
