// The command line: which command it names, and how what a command throws ends the program.
#pragma once

#include <string>
#include <vector>

#include "commands.h"

namespace kelctl {

/// Exit codes besides 0 and those of CLI11 for a command line that makes no sense.
enum ExitCode {
  kCallFailed = 1,       // an export failed, or the answer is no
  kLibraryUnusable = 2,  // KELUtils.dll, or its folder, is not there or cannot be used
  kNotHealthy = 3,       // doctor found a failure
  kRefused = 4,          // nothing was changed: it would have lost something
};

/// Runs one command line, given without the program's name, and returns the exit code. The session has the streams and
/// what is known of the console.
int RunCommandLine(std::vector<std::string> arguments, Session session);

}  // namespace kelctl
