// The exit codes of a stand-in program, besides the one that its settings ask for.
#pragma once

namespace standin {

enum ExitCode : int {
  kSuccess = 0,
  kNotLogged = 1,    // the log could not be written
  kBadSettings = 2,  // the INI file holds a value that cannot be used; the command line is logged all the same
};

}  // namespace standin
