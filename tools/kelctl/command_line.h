// The command line: which command it names, and how what a command throws ends the program.
#pragma once

#include <string>
#include <vector>

#include "commands.h"

namespace kelctl {

/// Exit codes besides 0 and those of CLI11 for a command line that makes no sense.
enum ExitCode { kCallFailed = 1, kLibraryUnusable = 2 };

/// Runs one command line, given without the program's name, and returns the exit code.
int RunCommandLine(std::vector<std::string> arguments, std::ostream& out, std::ostream& err);

}  // namespace kelctl
