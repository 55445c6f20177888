// The records of the trace log: lines of the form date;process;thread;level;module;function;"description".
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelctl {

/// One record. Its description may have several lines, as the text of the store has.
struct TraceRecord {
  std::string date;  // local time, yyyy/mm/dd hh:mm:ss.mmm
  std::string process, thread;
  unsigned level = 0;
  std::string module, function;
  std::string description;  // without its quotes

  /// True for a failure: every record of level 0, and those of level 20, which is also that of details, whose first
  /// line says that something failed or was repaired.
  bool IsError() const;
};

struct ParsedTrace {
  std::vector<TraceRecord> records;
  std::size_t otherLines = 0;  // in front of the first record, as when the text begins within one
};

/// The records of a part of the log. A line that is no beginning of a record belongs to the record before it.
ParsedTrace ParseTrace(std::string_view text);

/// The record as it stands in the log, without the line's end.
std::string TraceLine(const TraceRecord& record);

}  // namespace kelctl
