// Starting a sibling program from an export, and waiting for its answer. What goes wrong is traced here.
#pragma once

#include <string>

#include "KELUtils.h"
#include "win/process.h"

namespace frame {

/// A program to start, and the name under which the export that starts it traces.
struct SiblingProgram {
  const char* function;
  std::string commandLine;
  win::StartOptions options;
};

/// Traces the command line, for exports that announce their programs.
void TraceCommand(const SiblingProgram& program) noexcept;

/// Starts the program; none, and traced, when that fails.
win::Process Start(const SiblingProgram& program);

/// Starts the program and waits up to `milliseconds` (or INFINITE) for its end. Every failure is traced:
///   KE_PROGRAM_NOT_STARTED  it could not be started
///   KE_NOT_CREATED          it has not ended in time and was left running, or its exit code could not be read
///   KE_PROMPT_FAILED        its exit code is above `highestExitCode`
/// KE_SUCCESS stores the exit code in `exitCode`, which failures leave alone.
KE_RESULT StartAndWait(const SiblingProgram& program, DWORD milliseconds, DWORD highestExitCode, DWORD& exitCode);

/// Starts a program without a console and without the busy cursor, in a process group of its own. The command line is
/// cut at 8198 characters. None when it cannot be started; nothing is traced, so that a caller may try another place.
win::Process StartInBackground(std::string commandLine) noexcept;

}  // namespace frame
