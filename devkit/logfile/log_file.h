// Appending to a log file that several processes share.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

namespace logfile {

/// Added to the path of a log file for the one older file that is kept.
inline constexpr char kOldSuffix[] = ".old";

struct LogFile {
  char path[MAX_PATH] = {};  // full path, with room for kOldSuffix
  std::uint32_t maximumSize = 0;
};

/// Fills `file` from a path of at most `size` bytes. False, with `file` unchanged, when the path is empty, not
/// terminated or too long, or when `maximumSize` is 0.
bool Locate(const char* path, std::size_t size, std::uint32_t maximumSize, LogFile& file) noexcept;

/// Appends one line in a single write; false when the file cannot be opened or written. When the file would grow beyond
/// its maximum size, it first becomes the older file, replacing the previous one; a line that is larger than the
/// maximum gets a file of its own.
///
/// Writers of one file take turns through a named mutex. A writer that does not get its turn in time appends all the
/// same, but does not rotate. Nor is a file rotated while another program has it open: the line is appended, and a
/// later one rotates.
bool Append(const LogFile& file, const char* line, std::uint32_t length) noexcept;

}  // namespace logfile
