#include "win/replace_file.h"

#include <windows.h>

#include <algorithm>
#include <atomic>

#include "win/process.h"

namespace win {

namespace {

constexpr DWORD kPauses[] = {1,  5,   10,  20, 40,
                             80, 160, 320, 364};  // milliseconds between two attempts; a second in all

// 50 milliseconds in units of 100 nanoseconds: two writes closer than this may get the same time. The clock ticks every
// 16 milliseconds, and other programs round.
constexpr std::uint64_t kTimestampSlack = 500000;

constexpr std::string_view kTemporary = ".KE~";
constexpr std::size_t kTemporaryDigits = 12;
constexpr int kNames = 16;  // tried for a temporary file

// Gives new content another last-write time than the old content had: other processes detect a change by it.
class DistinctWriteTime {
 public:
  /// To construct before anything is written, with the time of the old content.
  explicit DistinctWriteTime(std::uint64_t before) noexcept : before_(before) {
    const std::uint64_t now = Now();
    close_ = now + kTimestampSlack > before && now < before + kTimestampSlack;
  }
  /// To call after the last change of the file.
  void Set(const FileHandle& file) const noexcept {
    if (close_) SetWritten(file, std::max(Now(), before_ + 1));
  }

 private:
  std::uint64_t before_;
  bool close_;
};

// An error that another process causes by holding the file open.
bool IsHeld(DWORD error) noexcept {
  return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED || error == ERROR_LOCK_VIOLATION ||
         error == ERROR_USER_MAPPED_FILE;
}

template <typename Path>
Path TemporaryPrefix(const Path& path) {
  return path + Path(kTemporary.begin(), kTemporary.end());
}

// A name that no other process uses, and that this process does not repeat for its next 65,535 files.
template <typename Path>
Path TemporaryName(const Path& path) {
  static std::atomic<unsigned> s_next{0};
  const std::uint64_t number = (std::uint64_t{GetCurrentProcessId()} << 16) | (s_next++ & 0xFFFF);
  Path name = TemporaryPrefix(path);
  for (int shift = 44; shift >= 0; shift -= 4) {
    name += static_cast<typename Path::value_type>("0123456789ABCDEF"[number >> shift & 0xF]);
  }
  return name;
}

template <typename Path>
bool RenameWithRetries(const Path& temporary, const Path& path) noexcept {
  for (const DWORD pause : kPauses) {
    if (RenameOver(temporary, path)) return true;
    if (!IsHeld(GetLastError())) return false;
    Pause(pause);
  }
  return RenameOver(temporary, path);
}

// False, with the last-error value set, when the file is unchanged.
template <typename Path>
bool ReplaceAtomically(const Path& path, std::string_view content, const FileStatus& like) {
  Path temporary;
  FileHandle file;
  for (int i = 0; i < kNames && !file; ++i) {
    temporary = TemporaryName(path);
    file = CreateReplacement(temporary, path, like.attributes);
    if (!file && GetLastError() != ERROR_FILE_EXISTS) return false;
  }
  if (!file) return false;
  const DistinctWriteTime time(like.written);
  bool done = Write(file, content.data(), content.size()) == content.size();
  if (done) time.Set(file);
  // The file stays open until it is renamed: `RemoveLeftovers` skips open files.
  done = done && Flush(file) && RenameWithRetries(temporary, path);
  if (done) return true;
  const DWORD error = GetLastError();
  file.Reset();
  Remove(temporary);
  SetLastError(error);
  return false;
}

// Writes over the content of an open file of `size` bytes, after reserving the space; returns the bytes written.
std::size_t WriteOver(const FileHandle& file, std::string_view content, std::uint64_t size) noexcept {
  const bool grows = content.size() > size;
  if (grows && !Resize(file, content.size())) return 0;
  const std::size_t written = Write(file, content.data(), content.size());
  if (grows && written == 0) Resize(file, size);
  return written;
}

template <typename Path>
Replaced OverwriteInPlace(const Path& path, std::string_view content, const FileStatus& like) noexcept {
  Replaced replaced{.inPlace = true, .error = GetLastError()};
  FileHandle file = OpenOrCreate(path);
  if (!file) return replaced;
  replaced.opened = true;
  const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
  const DistinctWriteTime time(like.written);
  const auto size = SizeOf(file);
  replaced.written = size ? WriteOver(file, content, *size) : 0;
  const bool all = size && replaced.written == content.size();
  const bool cut = all && (*size <= content.size() || Resize(file, content.size()));
  time.Set(file);
  replaced.complete = cut && Flush(file);
  if (!all && !existed) {
    // A missing file is better than a part of one: there is another copy.
    file.Reset();
    Remove(path);
  }
  return replaced;
}

template <typename Path>
Replaced Replace(const Path& path, std::string_view content, const FileStatus& like) noexcept {
  try {
    if ((like.attributes & FILE_ATTRIBUTE_READONLY) != 0) {
      SetLastError(ERROR_ACCESS_DENIED);
    } else if (ReplaceAtomically(path, content, like)) {
      return {.opened = true, .written = content.size(), .complete = true};
    }
  } catch (...) {
    // Out of memory for the temporary name; overwriting in place needs no allocation.
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  }
  return OverwriteInPlace(path, content, like);
}

template <typename Path>
void RemoveLeftoversOf(const Path& path) noexcept {
  try {
    RemoveUnused(TemporaryPrefix(path), kTemporaryDigits);
  } catch (...) {
    // Out of memory for the name: they stay until the next call.
  }
}

}  // namespace

Replaced ReplaceContent(const std::string& path, std::string_view content, const FileStatus& like) noexcept {
  return Replace(path, content, like);
}
Replaced ReplaceContent(const std::wstring& path, std::string_view content, const FileStatus& like) noexcept {
  return Replace(path, content, like);
}

void RemoveLeftovers(const std::string& path) noexcept { RemoveLeftoversOf(path); }
void RemoveLeftovers(const std::wstring& path) noexcept { RemoveLeftoversOf(path); }

}  // namespace win
