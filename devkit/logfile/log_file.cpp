#include "logfile/log_file.h"

#include <cstdio>
#include <cstring>

#include "sharedfile/turn.h"
#include "win/owner.h"

namespace logfile {
namespace {

constexpr DWORD kTurnMilliseconds = 1000;
constexpr int kOpenAttempts = 50;
constexpr DWORD kOpenPauseMilliseconds = 2;

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
  const sharedfile::Turn turn(file.path, kTurnMilliseconds);
  if (turn.Taken() && IsFull(file, length)) Rotate(file.path);
  const win::FileHandle output = OpenForAppending(file.path);
  DWORD written = 0;
  if (!output || !WriteFile(output.Get(), line, length, &written, nullptr)) return false;
  return written == length;
}

}  // namespace logfile
