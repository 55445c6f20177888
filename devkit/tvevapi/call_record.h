// What becomes of a call: its result, and its line in the event file.
#pragma once

#include "TvEvAPI.h"
#include "tvevapi/json_line.h"

namespace tvevapi {

/// The code that TvEvAPI.ini sets for the function `name`: what it has to return instead of doing its work. 0 for none.
int FailureSetFor(const char* name) noexcept;

/// The line that one call of a function leaves in events.jsonl, beside the DLL. Members are added in the order in which
/// they are to appear.
class CallRecord {
 public:
  /// A line for a call of the function `name`, now, in this process and thread.
  explicit CallRecord(const char* name) noexcept;

  void Add(const char* name, std::int64_t value) noexcept { line_.Number(name, value); }

  /// A text in the system's code page, or null. What is beyond 1024 bytes is left out, and the line then says "cut".
  void Add(const char* name, const char* text) noexcept;

  /// The members of an event's record; none for null.
  void Add(const EventInfo* info) noexcept;

  /// Ends the line with the call's result and writes it. Returns the result, or kNotRecorded when the line could not be
  /// written. To be called once.
  int Write(int result) noexcept;

 private:
  JsonLine line_;
  bool cut_ = false;
};

}  // namespace tvevapi
