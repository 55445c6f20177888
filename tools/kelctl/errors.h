// Results and errors. The command line turns each error into its message and exit code.
#pragma once

#include <stdexcept>
#include <string>

#include "KEResults.h"

namespace kelctl {

/// Exit codes besides 0 and those of CLI11 for a command line that cannot be parsed.
enum ExitCode {
  kCallFailed = 1,       // an export failed, or the answer is no
  kLibraryUnusable = 2,  // KELUtils.dll, or its folder, is missing or cannot be used
  kNotHealthy = 3,       // doctor found a failure
  kRefused = 4,          // nothing was changed: something would have been lost
};

/// One result code of KELUtils: its number, its constant's name, its meaning and what to do.
struct ResultCode {
  KE_RESULT code;
  const char* name;
  const char* text;
  const char* remedy;
};

/// The row of `code`; for a number that KEResults.h does not list, a row that says so.
ResultCode FindResultCode(KE_RESULT code);

/// "1782 KE_STORE_UNUSABLE: a store ...", for messages.
std::string DescribeResult(KE_RESULT code);

/// "Windows error 5: Access denied" for messages.
std::string WindowsError(unsigned long error);

/// The arguments do not make sense together, or a value cannot be what it should be.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The library cannot be loaded, or lacks an export.
struct LibraryError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// An export returned something else than KE_SUCCESS. The message names the export, the code and its meaning.
struct CallError : std::runtime_error {
  CallError(const std::string& exportName, KE_RESULT result);

  KE_RESULT result;
};

/// The command cannot do its work, for a reason of its own.
struct CommandError : std::runtime_error {
  CommandError(int code, const std::string& message) : std::runtime_error(message), exitCode(code) {}

  int exitCode;
};

}  // namespace kelctl
