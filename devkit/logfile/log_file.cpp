#include "logfile/log_file.h"

#include <cstdio>
#include <cstring>

#include "win/owner.h"

namespace logfile {
namespace {

constexpr DWORD kTurnMilliseconds = 1000;
constexpr int kOpenAttempts = 50;
constexpr DWORD kOpenPauseMilliseconds = 2;

using MutexHandle = win::Owner<HANDLE, &CloseHandle, 0>;

/// The name is the same for every spelling of the path in upper and lower case. Two paths with the same name only wait
/// for each other, so a short hash (64-bit FNV-1a) is enough.
void MutexName(const char* path, char (&name)[40]) noexcept {
  char lower[MAX_PATH] = {};
  LCMapStringA(LOCALE_INVARIANT, LCMAP_LOWERCASE, path, -1, lower, sizeof lower);
  std::uint64_t hash = 0xCBF29CE484222325u;
  for (const char* at = lower; *at != '\0'; ++at) hash = (hash ^ static_cast<unsigned char>(*at)) * 0x100000001B3u;
  std::snprintf(name, sizeof name, "Global\\LogFile-%016llx", static_cast<unsigned long long>(hash));
}

/// One writer's turn at a log file, over a scope. The mutex lives no longer than the turn, so that no handle outlives
/// the DLL.
class Turn {
 public:
  explicit Turn(const char* path) noexcept {
    char name[40];
    MutexName(path, name);
    mutex_.Reset(CreateMutexA(nullptr, FALSE, name));
    if (!mutex_) return;
    const DWORD wait = WaitForSingleObject(mutex_.Get(), kTurnMilliseconds);
    taken_ = wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED;  // a writer that died left whole lines behind
  }
  ~Turn() {
    if (taken_) ReleaseMutex(mutex_.Get());
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  bool Taken() const noexcept { return taken_; }

 private:
  MutexHandle mutex_;
  bool taken_ = false;
};

/// Others may not rename the file while it is open here: a line cannot end up in a file that is being replaced. The
/// renaming itself keeps the file busy for a moment, hence the attempts.
win::FileHandle OpenForAppending(const char* path) noexcept {
  for (int attempt = 1;; ++attempt) {
    win::FileHandle file(CreateFileA(path, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                     nullptr));
    if (file || GetLastError() != ERROR_SHARING_VIOLATION || attempt == kOpenAttempts) return file;
    Sleep(kOpenPauseMilliseconds);
  }
}

/// True when `length` more bytes would take a file that already holds something beyond its maximum.
bool IsFull(const LogFile& file, std::uint32_t length) noexcept {
  WIN32_FILE_ATTRIBUTE_DATA status;
  if (!GetFileAttributesExA(file.path, GetFileExInfoStandard, &status)) return false;
  const std::uint64_t size = (std::uint64_t{status.nFileSizeHigh} << 32) | status.nFileSizeLow;
  return size > 0 && size + length > file.maximumSize;
}

void Rotate(const char* path) noexcept {
  char old[MAX_PATH];
  std::snprintf(old, sizeof old, "%s%s", path, kOldSuffix);
  MoveFileExA(path, old, MOVEFILE_REPLACE_EXISTING);
}

}  // namespace

bool Locate(const char* path, std::size_t size, std::uint32_t maximumSize, LogFile& file) noexcept {
  if (maximumSize == 0 || path[0] == '\0' || std::memchr(path, '\0', size) == nullptr) return false;
  char full[MAX_PATH];
  const DWORD length = GetFullPathNameA(path, sizeof full, full, nullptr);
  if (length == 0 || length + sizeof kOldSuffix > sizeof full) return false;
  std::memcpy(file.path, full, sizeof full);
  file.maximumSize = maximumSize;
  return true;
}

bool Append(const LogFile& file, const char* line, std::uint32_t length) noexcept {
  const Turn turn(file.path);
  if (turn.Taken() && IsFull(file, length)) Rotate(file.path);
  const win::FileHandle output = OpenForAppending(file.path);
  DWORD written = 0;
  if (!output || !WriteFile(output.Get(), line, length, &written, nullptr)) return false;
  return written == length;
}

}  // namespace logfile
