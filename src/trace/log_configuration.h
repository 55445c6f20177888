// The configuration of the trace front end: the record, and how texts of the settings file become its numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "TvLogSys.h"
#include "text/paths.h"

namespace trace {

/// The trace library; looked for in the folder Common, then in the normal search order of Windows.
inline constexpr char kTraceLibrary[] = "TvLogSys.dll";

/// The configuration of the trace front end. A record whose size field is not its own size is not accepted.
struct LogConfiguration {
  std::uint32_t recordSize;
  std::uint32_t fileOutput;      // 1: lines go to the log file
  std::uint32_t debuggerOutput;  // 1: lines go to the debugger
  std::uint32_t level;
  char logFilePath[264];          // no longer than the path of LogFileSettings
  std::uint32_t maximumFileSize;  // bytes
  std::uint32_t fileOptionA;      // at least 1
  std::uint32_t fileOptionB;
  char libraryDirectory[261];  // where TvLogSys.dll is looked for; never empty
  char moduleName[260];        // the component that logs

  bool operator==(const LogConfiguration&) const = default;
};

/// The trace level of a settings text; 0 for a text that is no number and for numbers below 0.
std::uint32_t LogLevelFromText(const char* text) noexcept;

/// The maximum log size in bytes, of a settings text in kilobytes. 3 MB (3145728) when the text is no
/// number, when it is 0 or below, and when the bytes do not fit a signed 32-bit number.
std::uint32_t LogSizeFromText(const char* text) noexcept;

/// The record for a component's log file `<logDirectory>\<moduleName>.log`, file output on and debugger output off.
/// None when a text is empty, or does not fit its field here or in LogFileSettings: a cut path would name another file.
std::optional<LogConfiguration> MakeLogConfiguration(std::string_view moduleName, std::string_view libraryDirectory,
                                                     std::string_view logDirectory, std::uint32_t level,
                                                     std::uint32_t maximumFileSize,
                                                     text::LeadByteTest isLeadByte) noexcept;

/// True for a record of the right size that names a trace library directory.
bool IsAcceptable(const LogConfiguration& configuration) noexcept;

/// The record that TvLogSys.dll takes, made of the configuration.
LogFileSettings ToFileSettings(const LogConfiguration& configuration) noexcept;

static_assert(sizeof(LogFileSettings) == 276);

}  // namespace trace
