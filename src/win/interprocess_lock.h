// A lock between processes.
#pragma once

#include <string>

#include "win/owner.h"

namespace win {

/// A lock that only accounts that may write a given file can hold: bytes of a lock file, which has the access rights
/// of that file without the entries that only allow reading. Windows releases it when its holder ends. It serves
/// waiting processes before one that has just released it. Not thread-safe: one object, one thread.
class InterprocessLock {
 public:
  enum class Attempt { kHeld, kBusy, kUnavailable };

  InterprocessLock() noexcept = default;
  ~InterprocessLock() { Release(); }
  InterprocessLock(const InterprocessLock&) = delete;
  InterprocessLock& operator=(const InterprocessLock&) = delete;

  /// Tries once to acquire the lock of the file `path`, which is created with the writers of `like` when it is missing,
  /// or with those of its `folder` when that is missing too.
  /// While the result is kBusy, the caller tries again until it gives up: by that it keeps its place in the queue.
  /// kUnavailable, with the last-error value set: this account cannot use the lock.
  Attempt TryAcquire(const std::string& path, const std::string& like, const std::string& folder) noexcept;

  void Release() noexcept;

 private:
  FileHandle file_;
  bool first_ = false;  // in the queue
  bool held_ = false;
};

}  // namespace win
