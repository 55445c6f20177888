// Taking turns at a file that several processes share.
#pragma once

#include <windows.h>

#include "win/owner.h"

namespace sharedfile {

/// One thread's turn at a file, over a scope, among all threads of all processes that take turns at the same full path,
/// in whatever upper or lower case. The mutex lives no longer than the turn, so that no handle outlives the DLL.
class Turn {
 public:
  /// Waits at most so many milliseconds.
  Turn(const char* path, DWORD milliseconds) noexcept;
  ~Turn();
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  /// False when the turn did not come in time, or the mutex cannot be had.
  bool Taken() const noexcept { return taken_; }

 private:
  win::Owner<HANDLE, &CloseHandle, 0> mutex_;
  bool taken_ = false;
};

}  // namespace sharedfile
