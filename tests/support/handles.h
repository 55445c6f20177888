// What the test process holds.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdint>

namespace support {

/// How many handles are open. (The platform's own count is always 0 under Wine.) New handles get the lowest free
/// values: the search ends after many that are free.
inline DWORD OpenHandles() {
  DWORD count = 0, flags = 0, unused = 0;
  for (std::uintptr_t value = 4; unused < 300; value += 4) {
    const bool open = GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0;
    count += open;
    unused = open ? 0 : unused + 1;
  }
  return count;
}

/// Bytes in use in all heaps of the process.
inline long long HeapBytes() {
  HANDLE heaps[64];
  long long bytes = 0;
  const DWORD count = std::min<DWORD>(GetProcessHeaps(64, heaps), 64);
  for (DWORD i = 0; i < count; ++i) {
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heaps[i]);
    while (HeapWalk(heaps[i], &entry)) bytes += entry.wFlags & PROCESS_HEAP_ENTRY_BUSY ? entry.cbData : 0;
    HeapUnlock(heaps[i]);
  }
  return bytes;
}

}  // namespace support
