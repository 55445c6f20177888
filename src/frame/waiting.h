// The one place where the library waits for time to pass or for a program to end, so that tests need not.
#pragma once

#include <windows.h>

#include "win/process.h"

namespace frame {

/// How waiting is done. Tests put functions of their own here; nothing else changes them.
struct Waiting {
  void (*pause)(DWORD milliseconds);
  DWORD (*forEnd)(const win::Process& process, DWORD milliseconds);  // as win::Process::Wait
};

extern Waiting g_waiting;

/// Lets `milliseconds` pass.
inline void Pause(DWORD milliseconds) { g_waiting.pause(milliseconds); }

/// Waits up to `milliseconds` (or INFINITE) for the end of a process: WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED.
inline DWORD WaitForEnd(const win::Process& process, DWORD milliseconds) {
  return g_waiting.forEnd(process, milliseconds);
}

}  // namespace frame
