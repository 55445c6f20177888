// TvLogSys.dll: the log of the library. No function throws, and each keeps the caller's last-error value.
#include "TvLogSys.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "shared/files.h"

using namespace devkit;

namespace {

static_assert(sizeof(LogFileSettings) == 276, "the record crosses module borders");

/// An open log and its outputs.
struct Log {
  std::uint32_t handle = 0;                    // 0: this place in the table is free
  std::optional<std::uint32_t> fileLevel;      // none: no log file
  std::optional<std::uint32_t> debuggerLevel;  // none: nothing to the debugger
  LogFile file;
};

win::CriticalSection g_lock;  // guards the table
std::uint32_t g_opened = 0;   // logs opened so far: the upper part of the handles
Log g_logs[64];

/// Does `work` on an open log, under the lock; kBadHandle if no open log has this handle.
template <typename Work>
Result OnLog(std::uint32_t handle, Work work) noexcept {
  const win::KeptLastError kept;
  const win::LockGuard holding(g_lock);
  for (Log& log : g_logs) {
    if (log.handle == handle && handle != 0) return work(log), kSuccess;
  }
  return kBadHandle;
}

/// The handles of closed logs are not used again for a long time: a handle that is kept too long is found out.
Result OpenLog(std::uint32_t& handle) noexcept {
  const win::LockGuard holding(g_lock);
  for (Log& log : g_logs) {
    if (log.handle != 0) continue;
    // The lower part, the number of the place from 1 on, keeps open handles different after the count wraps.
    handle = (++g_opened << 8) | static_cast<std::uint32_t>(&log - g_logs + 1);
    log = Log{.handle = handle, .fileLevel = {}, .debuggerLevel = {}, .file = {}};
    return kSuccess;
  }
  return kTooMany;
}

/// One formatted line. Longer ones are cut; a cut line ends in CR LF.
struct Line {
  char text[8192];
  std::uint32_t length = 0;

  bool Format(const char* format, va_list arguments) noexcept {
    const int needed = std::vsnprintf(text, sizeof text, format, arguments);
    if (needed < 0) return false;
    length = static_cast<std::uint32_t>(needed);
    if (length >= sizeof text) {
      length = sizeof text - 1;
      std::memcpy(text + length - 2, "\r\n", 2);
    }
    return true;
  }
};

/// The common part of the two dump functions: checks the level against `Log::*output`, formats the line and passes it
/// to `write`, without the lock.
template <typename Write>
Result Dump(std::uint32_t handle, std::optional<std::uint32_t> Log::*output, std::uint32_t level, const char* format,
            va_list arguments, Write write) noexcept {
  const win::KeptLastError kept;
  if (format == nullptr) return kBadArgument;
  Log log;
  if (const Result result = OnLog(handle, [&](const Log& open) { log = open; }); result != kSuccess) return result;
  const std::optional<std::uint32_t> highest = log.*output;
  if (!highest) return kNotConfigured;
  if (level > *highest) return kSuccess;
  Line line;
  return line.Format(format, arguments) ? write(log, line) : kBadArgument;
}

Result WriteToFile(const Log& log, const Line& line) noexcept {
  return line.length == 0 || AppendLine(log.file, line.text, line.length) ? kSuccess : kFileFailure;
}

Result WriteToDebugger(const Log&, const Line& line) noexcept {
  OutputDebugStringA(line.text);
  return kSuccess;
}

}  // namespace

extern "C" {

int KE_SIBLING_CALL LogSys_InitializeLogSystem(uint32_t* handle) {
  const win::KeptLastError kept;
  return handle == nullptr ? kBadArgument : OpenLog(*handle);
}

int KE_SIBLING_CALL LogSys_FinalizeLogSystem(uint32_t handle) {
  return OnLog(handle, [](Log& log) { log.handle = 0; });
}

int KE_SIBLING_CALL LogSys_ConfigureLogFile(uint32_t handle, const LogFileSettings* settings) {
  const win::KeptLastError kept;
  LogFile file;
  if (settings == nullptr || !LocateLog(settings->path, sizeof settings->path, settings->maximumSize, file))
    return kBadArgument;
  return OnLog(handle, [&](Log& log) {
    log.fileLevel = settings->level;
    log.file = file;
  });
}

int KE_SIBLING_CALL LogSys_ConfigureLogDebugMsg(uint32_t handle, const uint32_t* level) {
  return level == nullptr ? kBadArgument : OnLog(handle, [level](Log& log) { log.debuggerLevel = *level; });
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
