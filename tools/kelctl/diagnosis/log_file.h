// Reading the trace log, also while others write it and replace it by a new one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "diagnosis/trace_records.h"

namespace kelctl {

/// The last records of the log at `path` and of its older part, oldest first: at most `count` of those that `wanted`
/// accepts. Looks at no more than the last 16 MB of each file. Missing files have no records.
std::vector<TraceRecord> LastRecords(const std::string& path, std::size_t count, bool (*wanted)(const TraceRecord&));

/// The last bytes of a file, at most `limit`; none when it cannot be opened. Hinders no writer.
std::optional<std::string> EndOfFile(const std::string& path, std::uint64_t limit);

/// What is appended to a log. Between two questions the file is not open, so that it can be replaced.
class LogFollower {
 public:
  /// Begins behind what is in the log now.
  explicit LogFollower(std::string path);

  /// The whole lines that came since the last question. When the log was replaced meanwhile, the rest of the older part
  /// comes first.
  std::string NewText();

 private:
  std::string path_;
  std::uint64_t identity_ = 0;  // of the file that was read last; 0 for none
  std::uint64_t position_ = 0;  // in it, behind the last whole line
};

}  // namespace kelctl
