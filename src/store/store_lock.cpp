#include "store/store_lock.h"

#include <windows.h>

#include <optional>
#include <string>

#include "trace/trace.h"
#include "win/file.h"
#include "win/module.h"
#include "win/process.h"

namespace store {

namespace {

// Bytes of the lock file. The holder has the first one, and the first in the queue the second: nobody overtakes it.
constexpr DWORD kLockByte = 0, kQueueByte = 1;

bool LockByte(const win::FileHandle& file, DWORD byte) noexcept { return LockFile(file.Get(), byte, 0, 1, 0) != FALSE; }
void UnlockByte(const win::FileHandle& file, DWORD byte) noexcept { UnlockFile(file.Get(), byte, 0, 1, 0); }

win::FileHandle OpenLockFile(const std::string& path, const std::string& like, const std::string& folder) noexcept {
  win::FileHandle file = win::OpenForUpdate(path);
  if (file || !win::LastErrorIsNotFound()) return file;
  win::AccessRights rights;
  const bool read = rights.Read(like) || (win::LastErrorIsNotFound() && rights.Read(folder));
  if (!read || !rights.KeepWriters()) return win::FileHandle();
  return win::OpenOrCreate(path, rights.ForNewFile());
}

enum class Attempt { kHeld, kBusy, kUnavailable };

// A lock between processes: bytes of a lock file, which only the writers of another file can open. It is released when
// its process ends, and serves waiting processes before one that has just released it. Not thread-safe: one object, one
// thread.
class InterprocessLock {
 public:
  ~InterprocessLock() {
    const win::KeptLastError kept;
    if (first_) UnlockByte(file_, kQueueByte);
    if (held_) UnlockByte(file_, kLockByte);
    file_.Reset();
  }

  // Tries once to acquire the lock of the file `path`, which is created with the writers of `like` when it is missing,
  // or with those of its `folder` when that is missing too. After kBusy the object keeps its place in the queue: the
  // caller tries again until it gives up. kUnavailable, with the last-error value set: this account cannot use the
  // lock.
  Attempt TryAcquire(const std::string& path, const std::string& like, const std::string& folder) noexcept {
    if (!file_) file_ = OpenLockFile(path, like, folder);
    if (!file_) return GetLastError() == ERROR_SHARING_VIOLATION ? Attempt::kBusy : Attempt::kUnavailable;
    first_ = first_ || LockByte(file_, kQueueByte);
    held_ = first_ && LockByte(file_, kLockByte);
    if (held_) {
      UnlockByte(file_, kQueueByte);
      first_ = false;
    }
    return held_ ? Attempt::kHeld : Attempt::kBusy;
  }

 private:
  win::FileHandle file_;
  bool first_ = false;  // in the queue
  bool held_ = false;
};

constexpr DWORD kLongestWait = 5000, kVainWaitMemory = 60000, kPause = 1;  // milliseconds

// Held for the whole scope: one thread of a process at a time waits for other processes. Guards the variables below.
win::CriticalSection g_writers;

std::optional<InterprocessLock> g_lock;  // of the outermost scope
int g_scopes = 0;                        // one inside the other
std::optional<DWORD> g_vainWait;         // the tick at the end of the last wait in vain

DWORD LongestWait() noexcept {
  if (g_vainWait && GetTickCount() - *g_vainWait >= kVainWaitMemory) g_vainWait.reset();
  return g_vainWait ? 0 : kLongestWait;
}

void Acquire() {
  const auto folder = win::FolderOf("KESAgent");
  if (!folder) return;
  const std::string path = *folder + "INTEGRA.LCK", live = *folder + "INTEGRA.DAT";
  const DWORD longest = LongestWait(), begin = GetTickCount();
  g_lock.emplace();
  const auto tryAcquire = [&] { return g_lock->TryAcquire(path, live, *folder); };
  Attempt attempt = tryAcquire();
  while (attempt == Attempt::kBusy && GetTickCount() - begin < longest) {
    win::Pause(kPause);
    attempt = tryAcquire();
  }
  if (attempt == Attempt::kHeld) return;
  if (attempt == Attempt::kUnavailable) {
    Trace(trace::kDetail, "StoreLock", "The lock of the store cannot be used [File = %s] - Error %d", path.c_str(),
          static_cast<int>(GetLastError()));
  } else if (longest != 0) {
    g_vainWait = GetTickCount();
    Trace(trace::kDetail, "StoreLock", "Waited in vain for the lock of the store [File = %s]", path.c_str());
  }
  g_lock.reset();  // not while the scope runs without it
}

}  // namespace

StoreLock::StoreLock() {
  g_writers.Enter();
  if (g_scopes++ != 0) return;
  try {
    Acquire();
  } catch (...) {
    g_lock.reset();
    --g_scopes;
    g_writers.Leave();
    throw;
  }
}

StoreLock::~StoreLock() {
  if (--g_scopes == 0) g_lock.reset();
  g_writers.Leave();
}

}  // namespace store
