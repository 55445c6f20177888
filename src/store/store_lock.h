// The lock between the processes that use one store.
#pragma once

#include <optional>
#include <string>

#include "win/named_lock.h"

namespace store {

/// Keeps other processes away from the files of the store for the scope, whose thread holds frame::IntegraLock all the
/// while: that one is always taken first. Waits five seconds at most; then the scope runs without the lock, so that a
/// process that hangs holds nobody up for longer, and the last writer wins. Inside another such scope it costs nothing.
class StoreLock {
 public:
  StoreLock();
  ~StoreLock();
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;

 private:
  std::optional<win::HeldBetweenProcesses> held_;
};

}  // namespace store
