// Running a program as a user does.
#pragma once

#include <string>

namespace support {

struct ProgramRun {
  unsigned long exitCode;
  std::string output;  // standard output and standard error, line ends as LF
};

/// Runs a command line and waits for its end, for at most a minute.
ProgramRun RunProgram(std::string commandLine);

}  // namespace support
