// The gate of the tests, which calls of Windows and the allocations of the DLL pass.
#pragma once

namespace win {

/// The kinds of calls, as the gate sees them.
enum class Call {
  kMemory,
  // Files
  kStatus,
  kRights,
  kOpen,
  kSize,
  kResize,
  kRead,
  kWrite,
  kFlush,
  kTime,
  kMove,
  kDelete,
  kFolder,
  kFind,
  kLock,
  // Others
  kRegistry,
  kProfile,
  kModule,
  kFunction,
  kStart,
  kWait,
  kEvent,
  kName,
};

/// Called before each call, on the calling thread. False makes the call fail without reaching Windows, with the
/// last-error value that the gate has set. `bytes` is the size of one step of reading or writing, which the gate may
/// reduce.
using Gate = bool (*)(Call call, unsigned long& bytes);

/// Null in the product. Tests set a gate that counts calls, makes them fail or ends the process.
extern Gate g_gate;

inline bool Passes(Call call, unsigned long& bytes) noexcept { return g_gate == nullptr || g_gate(call, bytes); }

inline bool Passes(Call call) noexcept {
  unsigned long none = 0;
  return Passes(call, none);
}

}  // namespace win
