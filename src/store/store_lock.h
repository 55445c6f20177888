// The lock between the processes that use one store.
#pragma once

namespace store {

/// Keeps other processes, and other threads of this one, from changing the store's files for the scope. Always acquired
/// before win::IntegraLock, which is not held while waiting, so that getters go on meanwhile.
///
/// Waits for other processes for up to five seconds; then the scope runs without the lock between processes, and
/// the last write wins. After waiting in vain the process does not wait again for a minute. Inside another such scope
/// of the same thread it costs nothing. Without the right to write the store the scope runs without the lock at once.
/// Both are traced.
class StoreLock {
 public:
  StoreLock();
  ~StoreLock();
  StoreLock(const StoreLock&) = delete;
  StoreLock& operator=(const StoreLock&) = delete;
};

}  // namespace store
