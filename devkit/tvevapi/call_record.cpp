#include "tvevapi/call_record.h"

#include <cstdio>
#include <cstring>

#include "logfile/log_file.h"
#include "sharedfile/module_path.h"
#include "tvevapi/results.h"

namespace tvevapi {
namespace {

constexpr std::uint32_t kMaximumFileSize = 1024 * 1024;
constexpr std::size_t kLongestText = 1024;

// An event has six texts at most; with the names of all its members and the numbers it still fits a line.
static_assert(6 * kLongestText * JsonLine::kLongestUnit + 2048 < JsonLine::kCapacity);

/// The time in ISO 8601, UTC.
void AddTime(JsonLine& line) noexcept {
  SYSTEMTIME now;
  GetSystemTime(&now);
  wchar_t time[64];
  const int length = _snwprintf(time, std::size(time), L"%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", now.wYear, now.wMonth,
                                now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
  line.Text("time", {time, static_cast<std::size_t>(length)});
}

}  // namespace

int FailureSetFor(const char* name) noexcept {
  char path[MAX_PATH];
  if (!sharedfile::FindWithExtension(".ini", path)) return 0;
  return static_cast<int>(GetPrivateProfileIntA("FAIL", name, 0, path));
}

CallRecord::CallRecord(const char* name) noexcept {
  AddTime(line_);
  Add("process", std::int64_t{GetCurrentProcessId()});
  Add("thread", std::int64_t{GetCurrentThreadId()});
  Add("call", name);
}

void CallRecord::Add(const char* name, const char* text) noexcept {
  if (text == nullptr) return line_.Null(name);
  const std::size_t length = strnlen(text, kLongestText);
  if (length == kLongestText && text[length] != '\0') cut_ = true;
  wchar_t units[kLongestText];  // no code page needs more units than bytes
  const int count =
      length == 0 ? 0 : MultiByteToWideChar(CP_ACP, 0, text, static_cast<int>(length), units, kLongestText);
  line_.Text(name, {units, static_cast<std::size_t>(count)});
}

void CallRecord::Add(const EventInfo* info) noexcept {
  if (info == nullptr) return;
  Add("class", std::int64_t{info->eventClass});
  Add("computer", info->computer);
  Add("product", info->product);
  Add("extra", std::int64_t{info->extra});
  Add("text", info->text);
  Add("description", info->description);
}

int CallRecord::Write(int result) noexcept {
  if (cut_) line_.True("cut");
  line_.Number("result", result);
  const std::string_view bytes = line_.Finish();
  char path[MAX_PATH];
  logfile::LogFile file;
  if (!sharedfile::FindBeside("events.jsonl", path) || !logfile::Locate(path, sizeof path, kMaximumFileSize, file) ||
      !logfile::Append(file, bytes.data(), static_cast<std::uint32_t>(bytes.size()))) {
    return kNotRecorded;
  }
  return result;
}

}  // namespace tvevapi
