#include "win/interprocess_lock.h"

#include "win/file.h"
#include "win/gate.h"
#include "win/owner.h"

namespace win {

namespace {

// The bytes of the file. The holder locks the first, the first waiting process the second, so it cannot be overtaken.
constexpr DWORD kLockByte = 0, kQueueByte = 1;

bool LockByte(const FileHandle& file, DWORD byte) noexcept {
  return Passes(Call::kLock) && LockFile(file.Get(), byte, 0, 1, 0);
}
void UnlockByte(const FileHandle& file, DWORD byte) noexcept { UnlockFile(file.Get(), byte, 0, 1, 0); }

FileHandle OpenLockFile(const std::string& path, const std::string& like, const std::string& folder) noexcept {
  FileHandle file = OpenForUpdate(path);
  if (file || !LastErrorIsNotFound()) return file;
  AccessRights rights;
  const bool read = rights.Read(like) || (LastErrorIsNotFound() && rights.Read(folder));
  if (!read || !rights.KeepWriters()) return FileHandle();
  return OpenOrCreate(path, rights.ForNewFile());
}

}  // namespace

InterprocessLock::Attempt InterprocessLock::TryAcquire(const std::string& path, const std::string& like,
                                                       const std::string& folder) noexcept {
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

void InterprocessLock::Release() noexcept {
  const KeptLastError kept;
  if (first_) UnlockByte(file_, kQueueByte);
  if (held_) UnlockByte(file_, kLockByte);
  first_ = held_ = false;
  file_.Reset();
}

}  // namespace win
