// The results of this module's functions.
#pragma once

namespace tvlogsys {

/// Zero is success, as TvLogSys.h asks for; the other numbers are this module's own.
enum Result : int {
  kSuccess = 0,  // also for a line that the level keeps out
  kBadArgument =
      1,           // a null pointer, a path that cannot be used, a maximum size of 0, a format that cannot be formatted
  kBadHandle = 2,  // not the handle of an open log
  kTooManyLogs = 3,    // every place in the table of open logs is taken
  kNotConfigured = 4,  // the log has no such output
  kFileFailure = 5,    // the log file could not be opened or written
};

}  // namespace tvlogsys
