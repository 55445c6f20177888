// Starting other programs and waiting for them. The child inherits no handle. No function throws; a failure leaves its
// reason in the last-error value.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "win/owner.h"

namespace win {

/// A started process, or none. Its end closes both handles, and leaves the process running.
class Process {
 public:
  Process() noexcept = default;
  explicit Process(const PROCESS_INFORMATION& started) noexcept;

  explicit operator bool() const noexcept { return static_cast<bool>(process_); }

  /// The identifier of the process; 0 for none.
  DWORD Id() const noexcept { return processId_; }

  /// Waits for the end of the process: WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED.
  DWORD Wait(DWORD milliseconds) const noexcept;

  /// The exit code of an ended process; none when it cannot be read.
  std::optional<DWORD> ExitCode() const noexcept;

  /// Hands both handles over to the caller; all zero for none.
  PROCESS_INFORMATION Release() noexcept;

 private:
  ProcessHandle process_;
  ProcessHandle thread_;
  DWORD processId_ = 0;
  DWORD threadId_ = 0;
};

/// How a program is started.
struct StartOptions {
  const char* application = nullptr;  // path of the program; null: the first word of the command line names it
  DWORD creationFlags = 0;
  DWORD startupFlags = 0;  // STARTF_...
};

/// Starts a program in the caller's current directory, with the caller's environment; none when that fails.
Process StartProcess(std::string commandLine, const StartOptions& options) noexcept;
Process StartProcess(std::wstring commandLine, DWORD creationFlags) noexcept;

/// Sets the event of that name. Errors are ignored.
void SetNamedEvent(const char* name) noexcept;

// The only place where the library pauses or waits for a program. Tests replace it.

/// The functions that wait. Only tests change them.
struct Waiting {
  void (*pause)(DWORD milliseconds);
  DWORD (*forEnd)(const Process& process, DWORD milliseconds);  // as Process::Wait
};

extern Waiting g_waiting;

/// Lets `milliseconds` pass.
inline void Pause(DWORD milliseconds) { g_waiting.pause(milliseconds); }

/// Waits up to `milliseconds` (or INFINITE) for the end of a process: WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED.
inline DWORD WaitForEnd(const Process& process, DWORD milliseconds) { return g_waiting.forEnd(process, milliseconds); }

}  // namespace win
