// What ends a command early. The command line turns each into its message and exit code.
#pragma once

#include <stdexcept>
#include <string>

#include "KEResults.h"

namespace kelctl {

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

/// What the command was to do is not possible, for a reason of its own.
struct CommandError : std::runtime_error {
  CommandError(int code, const std::string& message) : std::runtime_error(message), exitCode(code) {}

  int exitCode;
};

}  // namespace kelctl
