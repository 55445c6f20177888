// The open connections of this process.
#pragma once

#include <windows.h>

#include "win/owner.h"

namespace tvevapi {

/// Counts the connections: each start opens one, each stop closes one. Every function may be called from any thread.
class Connections {
 public:
  /// False when there are too many already.
  bool Open() noexcept {
    const win::LockGuard holding(lock_);
    if (count_ == kMaximum) return false;
    ++count_;
    return true;
  }

  /// False when none is open.
  bool Close() noexcept {
    const win::LockGuard holding(lock_);
    if (count_ == 0) return false;
    --count_;
    return true;
  }

  bool IsOpen() noexcept {
    const win::LockGuard holding(lock_);
    return count_ > 0;
  }

 private:
  static constexpr unsigned kMaximum = 10000;

  win::CriticalSection lock_;
  unsigned count_ = 0;
};

}  // namespace tvevapi
