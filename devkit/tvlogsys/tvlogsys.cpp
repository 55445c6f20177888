// TvLogSys.dll: the exported functions. No function throws, and each keeps the caller's last-error value.
#include "TvLogSys.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "open_logs.h"
#include "win/owner.h"

namespace tvlogsys {
namespace {

static_assert(sizeof(LogFileSettings) == 276, "the record crosses module borders");

OpenLogs openLogs;

/// One formatted line. Longer ones are cut; a cut line ends in CR LF, as lines of the log do.
struct Line {
  char text[8192];
  std::uint32_t length = 0;

  bool Format(const char* format, va_list arguments) noexcept {
    const int wanted = std::vsnprintf(text, sizeof text, format, arguments);
    if (wanted < 0) return false;
    length = static_cast<std::uint32_t>(wanted);
    if (length >= sizeof text) {
      length = sizeof text - 1;
      std::memcpy(text + length - 2, "\r\n", 2);
    }
    return true;
  }
};

/// The common part of the two dump functions: finds out whether the line is wanted at `Log::*output`, formats it and
/// passes it to `write`.
template <typename Write>
Result Dump(std::uint32_t handle, std::optional<std::uint32_t> Log::*output, std::uint32_t level, const char* format,
            va_list arguments, Write write) noexcept {
  const win::KeptLastError kept;
  if (format == nullptr) return kBadArgument;
  Log log;
  if (const Result result = openLogs.Get(handle, log); result != kSuccess) return result;
  const std::optional<std::uint32_t> highest = log.*output;
  if (!highest) return kNotConfigured;
  if (level > *highest) return kSuccess;
  Line line;
  return line.Format(format, arguments) ? write(log, line) : kBadArgument;
}

Result WriteToFile(const Log& log, const Line& line) noexcept {
  return line.length == 0 || logfile::Append(log.file, line.text, line.length) ? kSuccess : kFileFailure;
}

Result WriteToDebugger(const Log&, const Line& line) noexcept {
  OutputDebugStringA(line.text);
  return kSuccess;
}

}  // namespace
}  // namespace tvlogsys

using namespace tvlogsys;

extern "C" {

int KE_SIBLING_CALL LogSys_InitializeLogSystem(uint32_t* handle) {
  const win::KeptLastError kept;
  return handle == nullptr ? kBadArgument : openLogs.Open(*handle);
}

int KE_SIBLING_CALL LogSys_FinalizeLogSystem(uint32_t handle) {
  const win::KeptLastError kept;
  return openLogs.Close(handle);
}

int KE_SIBLING_CALL LogSys_ConfigureLogFile(uint32_t handle, const LogFileSettings* settings) {
  const win::KeptLastError kept;
  if (settings == nullptr) return kBadArgument;
  LogFile file;
  if (!logfile::Locate(settings->path, sizeof settings->path, settings->maximumSize, file)) return kBadArgument;
  return openLogs.SetFile(handle, settings->level, file);
}

int KE_SIBLING_CALL LogSys_ConfigureLogDebugMsg(uint32_t handle, const uint32_t* level) {
  const win::KeptLastError kept;
  return level == nullptr ? kBadArgument : openLogs.SetDebugger(handle, *level);
}

int KE_SIBLING_CALL LogSys_DumpLogFile(uint32_t handle, uint32_t level, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const Result result = Dump(handle, &Log::fileLevel, level, format, arguments, WriteToFile);
  va_end(arguments);
  return result;
}

int KE_SIBLING_CALL LogSys_DumpLogDebugMsg(uint32_t handle, uint32_t level, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const Result result = Dump(handle, &Log::debuggerLevel, level, format, arguments, WriteToDebugger);
  va_end(arguments);
  return result;
}

}  // extern "C"
