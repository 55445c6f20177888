#include "store/durable_file.h"

#include <windows.h>

#include <algorithm>

#include "frame/waiting.h"
#include "store/store_file.h"

namespace store {
namespace {

constexpr DWORD kPauses[] = {1, 5, 10, 20, 40, 80};  // milliseconds between two attempts

// Two writes closer than this may get the same last-write time by themselves: file systems tell it in ticks of the
// clock, of up to 16 milliseconds. In units of 100 nanoseconds.
constexpr std::uint64_t kTick = 500000;

// Makes the last-write time of a new content differ from that of the old one: by it other processes know that the file
// has changed.
class NewerTime {
 public:
  /// To be made before anything is written, with the time of the old content.
  explicit NewerTime(std::uint64_t before) noexcept : before_(before) {
    const std::uint64_t now = win::Now();
    soon_ = now + kTick > before && now < before + kTick;
  }
  /// To be called after the last change of the file.
  void Set(const win::FileHandle& file) const noexcept {
    if (soon_) win::SetWritten(file, std::max(win::Now(), before_ + 1));
  }

 private:
  std::uint64_t before_;
  bool soon_;
};

// What another process causes that has the file open.
bool IsHeld(DWORD error) noexcept {
  return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED || error == ERROR_LOCK_VIOLATION ||
         error == ERROR_USER_MAPPED_FILE;
}

bool PutInPlace(const std::string& beside, const std::string& path) noexcept {
  for (const DWORD pause : kPauses) {
    if (win::PutInPlace(beside, path)) return true;
    if (!IsHeld(GetLastError())) return false;
    frame::Pause(pause);
  }
  return win::PutInPlace(beside, path);
}

bool ReplaceFromBeside(const std::string& path, std::string_view content, const win::FileStatus& like) {
  const std::string beside = path + ".NEW";
  win::FileHandle file = win::CreateReplacement(beside, path, like.attributes);
  if (!file) return false;
  const NewerTime time(like.written);
  bool good = win::Write(file, content.data(), content.size()) == content.size();
  if (good) time.Set(file);
  good = good && win::Flush(file);
  file.Reset();
  if (good && PutInPlace(beside, path)) return true;
  win::Remove(beside);
  return false;
}

// Writes over the content of an open file of `size` bytes, room on the disk first; gives how many bytes went out.
std::size_t WriteOver(const win::FileHandle& file, std::string_view content, std::uint64_t size) noexcept {
  const bool grows = content.size() > size;
  if (grows && !win::Resize(file, content.size())) return 0;
  const std::size_t written = win::Write(file, content.data(), content.size());
  if (grows && written == 0) win::Resize(file, size);
  return written;
}

Replaced OverwriteInPlace(const std::string& path, std::string_view content, const win::FileStatus& like) noexcept {
  win::FileHandle file = win::OpenOrCreate(path);
  if (!file) return {};
  const bool existed = GetLastError() == ERROR_ALREADY_EXISTS;
  const NewerTime time(like.written);
  const auto size = win::SizeOf(file);
  Replaced replaced{.opened = true, .written = size ? WriteOver(file, content, *size) : 0};
  const bool all = size && replaced.written == content.size();
  const bool cut = all && (*size <= content.size() || win::Resize(file, content.size()));
  time.Set(file);
  replaced.whole = cut && win::Flush(file);
  if (!all && !existed) {
    // Better none than a part: for a missing file there is another copy.
    file.Reset();
    win::Remove(path);
  }
  return replaced;
}

}  // namespace

Replaced ReplaceContent(const std::string& path, std::string_view content, const win::FileStatus& like) noexcept {
  try {
    if (ReplaceFromBeside(path, content, like)) {
      return {.opened = true, .written = content.size(), .whole = true};
    }
  } catch (...) {
    // No memory for the name beside it: in place it needs none.
  }
  return OverwriteInPlace(path, content, like);
}

bool ReplaceByCopy(const std::string& source, const std::string& path) {
  const win::FileHandle from = win::OpenForReading(source);
  if (!from) return false;
  const auto content = ReadContent(from);
  if (!content) return false;
  win::FileStatus like = win::StatusOf(path);
  like.attributes = win::StatusOf(source).attributes;
  return ReplaceContent(path, *content, like).whole;
}

}  // namespace store
