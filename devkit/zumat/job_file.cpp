#include "zumat/job_file.h"

#include "sharedfile/replacement.h"
#include "zumat/jobs_text.h"

namespace zumat {
namespace {

constexpr char kJobsFile[] = "\\jobs.json";
constexpr char kLockFile[] = "\\jobs.lock";

/// How long to wait for a file that others use.
struct Patience {
  int attempts;
  DWORD pauseMilliseconds;
  bool whenDenied;  // replacing a file that is open somewhere is denied, as it is without the right to do so
};

constexpr Patience kForTurn{1500, 20, false};  // 30 seconds; the library waits 90 for this program

// Programs that look at every new file, such as a virus scanner, keep it busy for a moment.
constexpr Patience kForReading{20, 50, false};
constexpr Patience kForReplacing{20, 50, true};

bool IsInUse(DWORD error) noexcept {
  return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING;
}

/// Repeats a step until it succeeds, or fails for another reason than a file in use, or patience ends. The reason of
/// the failure is the last-error value.
template <typename Step>
bool Attempt(const Patience& patience, Step step) {
  for (int attempt = 1;; ++attempt) {
    if (step()) return true;
    const DWORD error = GetLastError();
    const bool goesOn = IsInUse(error) || (patience.whenDenied && error == ERROR_ACCESS_DENIED);
    if (!goesOn || attempt == patience.attempts) return SetLastError(error), false;
    Sleep(patience.pauseMilliseconds);
  }
}

/// Reading is enough to lock, so that those who may not change the jobs can still list them.
win::FileHandle OpenLockFile(const std::string& path) noexcept {
  return win::FileHandle(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                     OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool TryLock(const win::FileHandle& file) noexcept {
  OVERLAPPED range{};
  return LockFileEx(file.Get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &range) != 0;
}

Outcome FileFailure(const std::string& what, DWORD error) {
  return {kFileFailure, what + " (Windows error " + std::to_string(error) + ")"};
}

bool Replace(const std::string& path, const std::string& text) noexcept {
  DWORD error = ERROR_SUCCESS;
  {
    sharedfile::Replacement file(path.c_str());
    if (file.Write(text.data(), text.size()) && file.PutInPlace()) return true;
    error = GetLastError();  // before the file is deleted
  }
  SetLastError(error);
  return false;
}

}  // namespace

JobFile::JobFile(const std::string& folder) : folder_(folder), path_(folder + kJobsFile) {}

JobFile::~JobFile() {
  OVERLAPPED range{};
  if (locked_) UnlockFileEx(lock_.Get(), 0, 1, 0, &range);
}

Outcome JobFile::Lock() {
  if (!CreateDirectoryA(folder_.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
    return FileFailure(folder_ + " cannot be created", GetLastError());
  const std::string path = folder_ + kLockFile;
  locked_ = Attempt(kForTurn, [&] {
    if (!lock_) lock_ = OpenLockFile(path);
    return lock_ && TryLock(lock_);
  });
  if (locked_) return {};
  if (IsInUse(GetLastError())) return {kBusy, "other processes held the jobs file for too long"};
  return FileFailure(path + " cannot be locked", GetLastError());
}

Outcome JobFile::Read(Jobs& jobs) const {
  win::FileHandle file;
  const bool opened = Attempt(kForReading, [&] {
    file = sharedfile::OpenSource(path_.c_str());
    return static_cast<bool>(file);
  });
  if (!opened && GetLastError() == ERROR_FILE_NOT_FOUND) {
    jobs.clear();
    return {};
  }
  std::string text(kMaximumJobsText + 1, '\0');
  std::size_t length = 0;
  if (!opened || !sharedfile::ReadFully(file, text.data(), text.size(), length))
    return FileFailure(path_ + " cannot be read", GetLastError());
  return ReadJobs(std::string_view(text).substr(0, length), jobs);
}

Outcome JobFile::Write(const Jobs& jobs) const {
  const std::string text = FormatJobs(jobs);
  if (text.size() > kMaximumJobsText) return {kTooManyJobs, "the jobs file would be too large"};
  if (!Attempt(kForReplacing, [&] { return Replace(path_, text); }))
    return FileFailure(path_ + " cannot be written", GetLastError());
  return {};
}

}  // namespace zumat
