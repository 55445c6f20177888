// Starting a sibling program from an export, and waiting for its end. Every failure is traced here, at level 20 under
// `function`, the name that the caller traces under.
//
// A program is started by its full path alone, which is the application or, in double quotes, the beginning of the
// command line: Windows would search any other name in the current directory too.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

#include "KEResults.h"
#include "win/process.h"

namespace siblings {

/// A program to start, and the name under which the export that starts it traces.
struct SiblingProgram {
  const char* function;
  std::string commandLine;
  win::StartOptions options;
};

/// Traces the command line, for exports that announce their programs.
void TraceCommand(const SiblingProgram& program) noexcept;

/// Starts the program; none when that fails.
win::Process Start(const SiblingProgram& program);

/// Starts a program without a console and without the busy cursor, in a process group of its own, by the first of the
/// command lines that succeeds: one for each place of the program. They are cut at 8198 characters. None when all fail;
/// the last one is then traced.
win::Process StartInBackground(const char* function, std::initializer_list<std::string> commandLines);

/// Waits up to `milliseconds` (or INFINITE) for the end of the program: WAIT_OBJECT_0, WAIT_TIMEOUT or WAIT_FAILED.
DWORD WaitForProgram(const char* function, const win::Process& process, DWORD milliseconds);

/// The exit code of an ended program; none when it cannot be read.
std::optional<DWORD> ExitCodeOf(const char* function, const win::Process& process);

/// Starts the program and waits up to `milliseconds` (or INFINITE) for its end.
///   KE_PROGRAM_NOT_STARTED  it could not be started
///   KE_NOT_CREATED          it has not ended in time and was left running, or its exit code could not be read
///   KE_PROMPT_FAILED        its exit code is above `highestExitCode`
/// KE_SUCCESS stores the exit code in `exitCode`, which failures leave alone.
KE_RESULT StartAndWait(const SiblingProgram& program, DWORD milliseconds, DWORD highestExitCode, DWORD& exitCode);

// Actions that a sibling product ships as a DLL with one entry point.

/// Loads the action module `name` from its folder next to the module directory, calls its `Do` with both arguments and
/// frees it. The result of `Do`; KE_OUT_OF_RANGE for a null name, KE_MODULE_NOT_LOADED when the module or its entry
/// point cannot be loaded, or the module directory is unknown. Traces its start and its end.
KE_RESULT ExecuteLocalProcessAction(const char* name, std::uint32_t first, std::uint32_t second);

/// A command line: the program's path in double quotes, a blank and the arguments.
std::string QuotedCommand(const std::string& program, const std::string& arguments);

/// KE_LaunchKEPWInst(), under its trace name: starts the installer helper and does not wait for it. KE_SUCCESS, or
/// KE_INSTALL_HELPER_NOT_STARTED when it is neither in its own folder nor in the module directory.
KE_RESULT LaunchInstallHelper() noexcept;

}  // namespace siblings
