#include "store/store_lock.h"

#include <windows.h>

#include <optional>
#include <string>

#include "trace/trace.h"
#include "win/interprocess_lock.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/process.h"

namespace store {

namespace {

using Attempt = win::InterprocessLock::Attempt;

constexpr DWORD kLongestWait = 5000, kVainWaitMemory = 60000, kPause = 1;  // milliseconds

// Held for the whole scope: one thread of a process at a time waits for other processes. Guards the variables below.
win::CriticalSection g_writers;

std::optional<win::InterprocessLock> g_lock;  // of the outermost scope
int g_scopes = 0;                             // one inside the other
std::optional<DWORD> g_vainWait;              // the tick at the end of the last wait in vain

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
