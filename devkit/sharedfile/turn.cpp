#include "sharedfile/turn.h"

#include <cstdio>
#include <cstring>

#include "sharedfile/hash.h"

namespace sharedfile {
namespace {

/// Two paths with the same name only wait for each other, so a short hash is enough.
void MutexName(const char* path, char (&name)[40]) noexcept {
  char lower[MAX_PATH] = {};
  LCMapStringA(LOCALE_INVARIANT, LCMAP_LOWERCASE, path, -1, lower, sizeof lower);
  const auto hash = static_cast<unsigned long long>(Hash(lower, std::strlen(lower)));
  std::snprintf(name, sizeof name, "Global\\SharedFile-%016llx", hash);
}

}  // namespace

Turn::Turn(const char* path, DWORD milliseconds) noexcept {
  char name[40];
  MutexName(path, name);
  mutex_.Reset(CreateMutexA(nullptr, FALSE, name));
  if (!mutex_) return;
  const DWORD wait = WaitForSingleObject(mutex_.Get(), milliseconds);
  // One that died in its turn left the file whole: every change is a single write or a single renaming.
  taken_ = wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED;
}

Turn::~Turn() {
  if (taken_) ReleaseMutex(mutex_.Get());
}

}  // namespace sharedfile
