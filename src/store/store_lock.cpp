#include "store/store_lock.h"

#include <windows.h>

#include <string>

#include "text/paths.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/process.h"

namespace store {

namespace {

using Attempt = win::InterprocessLock::Attempt;

constexpr DWORD kLongestWait = 5000, kVainWaitMemory = 60000, kPause = 1;  // milliseconds

// Held for the whole scope, so that one thread of a process at a time waits for the others. Guards what follows.
win::CriticalSection g_writers;

int g_scopes = 0;                 // one inside the other
std::optional<DWORD> g_vainWait;  // the tick at the end of the last wait in vain

DWORD LongestWait() noexcept {
  if (g_vainWait && GetTickCount() - *g_vainWait >= kVainWaitMemory) g_vainWait.reset();
  return g_vainWait ? 0 : kLongestWait;
}

}  // namespace

StoreLock::StoreLock() {
  g_writers.Enter();
  if (g_scopes++ != 0) return;
  try {
    Acquire();
  } catch (...) {
    --g_scopes;
    g_writers.Leave();
    throw;
  }
}

StoreLock::~StoreLock() {
  lock_.reset();
  --g_scopes;
  g_writers.Leave();
}

void StoreLock::Acquire() {
  const auto directory = win::KeptModuleDirectory();
  if (directory.empty()) return;
  const std::string folder = text::SiblingFolder(directory, "KESAgent");
  const std::string path = folder + "INTEGRA.LCK", live = folder + "INTEGRA.DAT";
  const DWORD longest = LongestWait(), begin = GetTickCount();
  lock_.emplace();
  const auto tryAcquire = [&] { return lock_->TryAcquire(path, live, folder); };
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
  lock_.reset();  // not while the scope runs without it
}

}  // namespace store
