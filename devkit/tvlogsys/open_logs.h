// The table of open logs.
#pragma once

#include <cstdint>
#include <optional>

#include "logfile/log_file.h"
#include "results.h"
#include "win/owner.h"

namespace tvlogsys {

using logfile::LogFile;

/// What one open log writes, and where.
struct Log {
  std::optional<std::uint32_t> fileLevel;      // none: no log file
  std::optional<std::uint32_t> debuggerLevel;  // none: nothing to the debugger
  LogFile file;
};

/// A fixed number of open logs. Every function may be called from any thread. Handles are never 0 and those of closed
/// logs are not given out again for a long time, so that a handle kept too long is found out.
class OpenLogs {
 public:
  static constexpr std::uint32_t kCapacity = 64;

  /// Opens a log without any output; kTooManyLogs when the table is full.
  Result Open(std::uint32_t& handle) noexcept;

  /// Each of these gives kBadHandle when the log is not open.
  Result Close(std::uint32_t handle) noexcept;
  Result SetFile(std::uint32_t handle, std::uint32_t level, const LogFile& file) noexcept;
  Result SetDebugger(std::uint32_t handle, std::uint32_t level) noexcept;
  Result Get(std::uint32_t handle, Log& log) noexcept;

 private:
  static constexpr std::uint32_t kFree = 0;

  struct Place {
    std::uint32_t handle = kFree;
    Log log;
  };

  // The caller of these holds the lock.
  Place* Find(std::uint32_t handle) noexcept;
  Place* FindOpen(std::uint32_t handle) noexcept;

  win::CriticalSection lock_;
  std::uint32_t opened_ = 0;  // how many logs were opened so far: the upper part of the handles
  Place places_[kCapacity];
};

}  // namespace tvlogsys
