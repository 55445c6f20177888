#include "zumat/job_file.h"

#include "win/file.h"
#include "zumat/jobs_text.h"

namespace zumat {

Second LocalTime() noexcept {
  SYSTEMTIME time;
  GetLocalTime(&time);
  const Day day{std::chrono::year(time.wYear) / time.wMonth / time.wDay};
  return day + std::chrono::hours(time.wHour) + std::chrono::minutes(time.wMinute) + std::chrono::seconds(time.wSecond);
}

Outcome FileFailure(const std::string& attempt) {
  const DWORD error = GetLastError();
  char text[256] = "";
  const DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                                      MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), text, sizeof text, nullptr);
  const std::string_view reason(text, length);
  return {kFileFailure, attempt + ": Windows error " + std::to_string(error) + ", " +
                            std::string(reason.substr(0, reason.find_last_not_of("\r\n. ") + 1))};
}

JobFile::JobFile(const std::string& folder, DWORD milliseconds)
    : folder_(folder), path_(folder + "\\jobs.json"), lock_(path_.c_str(), milliseconds) {}

Outcome JobFile::Read(Jobs& jobs) const {
  if (!lock_.Held()) return {kBusy, "other processes kept the jobs file locked for too long"};
  const auto text = devkit::ReadShared(path_, kMaximumJobsText);
  if (text) return ReadJobs(*text, jobs);
  if (!win::LastErrorIsNotFound()) return FileFailure(path_ + " cannot be read");
  jobs.clear();
  return {};
}

Outcome JobFile::Write(const Jobs& jobs) const {
  const std::string text = FormatJobs(jobs);
  if (text.size() > kMaximumJobsText) return {kTooManyJobs, "the jobs file would be too large"};
  if (!CreateDirectoryA(folder_.c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
    return FileFailure(folder_ + " cannot be created");
  return devkit::ReplaceShared(path_, text) ? Outcome() : FileFailure(path_ + " cannot be written");
}

}  // namespace zumat
