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

/// The next part of the output. Empty when the process has ended and all was read, whoever else holds the pipe, or when
/// nothing came for so many milliseconds.
std::string NextOutput(const PipedChild& child, DWORD longestSilence);

}  // namespace kelctl
