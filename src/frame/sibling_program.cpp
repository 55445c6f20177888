#include "frame/sibling_program.h"

#include <algorithm>
#include <utility>

#include "frame/trace.h"
#include "frame/waiting.h"

namespace frame {
namespace {

constexpr std::size_t kLongestBackgroundCommand = 8198;
constexpr win::StartOptions kInBackground{.application = nullptr,
                                          .creationFlags = CREATE_NEW_PROCESS_GROUP | DETACHED_PROCESS,
                                          .startupFlags = STARTF_FORCEOFFFEEDBACK};

}  // namespace

void TraceCommand(const SiblingProgram& program) noexcept {
  Trace(kDetail, program.function, "CreateProcess [Command = %s]", program.commandLine.c_str());
}

win::Process Start(const SiblingProgram& program) {
  win::Process process = win::StartProcess(program.commandLine, program.options);
  if (!process) Trace(kDetail, program.function, "CreateProcess failed [Command = %s]", program.commandLine.c_str());
  return process;
}

KE_RESULT StartAndWait(const SiblingProgram& program, DWORD milliseconds, DWORD highestExitCode, DWORD& exitCode) {
  const win::Process process = Start(program);
  if (!process) return KE_PROGRAM_NOT_STARTED;

  if (const DWORD waited = WaitForEnd(process, milliseconds); waited != WAIT_OBJECT_0) {
    Trace(kDetail, program.function, "Wait failed [Result = %d]", static_cast<int>(waited));
    return KE_NOT_CREATED;
  }
  const auto ended = process.ExitCode();
  if (!ended) {
    Trace(kDetail, program.function, "GetExitCodeProcess failed [Error = %d]", static_cast<int>(GetLastError()));
    return KE_NOT_CREATED;
  }
  if (*ended > highestExitCode) {
    Trace(kDetail, program.function, "Process failed [Command = %s] [Result = %d]", program.commandLine.c_str(),
          static_cast<int>(*ended));
    return KE_PROMPT_FAILED;
  }
  exitCode = *ended;
  return KE_SUCCESS;
}

win::Process StartInBackground(std::string commandLine) noexcept {
  commandLine.resize(std::min(commandLine.size(), kLongestBackgroundCommand));
  return win::StartProcess(std::move(commandLine), kInBackground);
}

}  // namespace frame
