// A child process whose output kelctl reads from a pipe.
#pragma once

#include <windows.h>

#include <string>

#include "win/owner.h"

namespace kelctl {

/// The result of `StartPiped`.
struct PipedChild {
  win::ProcessHandle output;   // the reading end of the pipe; null when there is no pipe
  win::ProcessHandle process;  // null when the process could not be started
  DWORD error = 0;             // the Windows error of what failed
};

/// Starts a program without a console window, with its output in a pipe, and with its errors too when `errors` is set.
PipedChild StartPiped(std::wstring commandLine, bool errors);

}  // namespace kelctl
