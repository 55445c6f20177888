#include "frame/sibling_program.h"

#include <string_view>

#include "frame/paths.h"
#include "frame/trace.h"
#include "frame/waiting.h"

namespace frame {
namespace {

constexpr std::size_t kLongestBackgroundCommand = 8198;
constexpr win::StartOptions kInBackground{.application = nullptr,
                                          .creationFlags = CREATE_NEW_PROCESS_GROUP | DETACHED_PROCESS,
                                          .startupFlags = STARTF_FORCEOFFFEEDBACK};

bool HasFullPath(const std::string& commandLine, const win::StartOptions& options) {
  if (options.application) return IsFullPath(options.application);
  return commandLine.starts_with('"') && IsFullPath(std::string_view(commandLine).substr(1));
}

win::Process TryToStart(const std::string& commandLine, const win::StartOptions& options) {
  return HasFullPath(commandLine, options) ? win::StartProcess(commandLine, options) : win::Process();
}

void TraceNotStarted(const char* function, const std::string& commandLine) noexcept {
  Trace(kDetail, function, "CreateProcess failed [Command = %s]", commandLine.c_str());
}

}  // namespace

void TraceCommand(const SiblingProgram& program) noexcept {
  Trace(kDetail, program.function, "CreateProcess [Command = %s]", program.commandLine.c_str());
}

win::Process Start(const SiblingProgram& program) {
  win::Process process = TryToStart(program.commandLine, program.options);
  if (!process) TraceNotStarted(program.function, program.commandLine);
  return process;
}

win::Process StartInBackground(const char* function, std::initializer_list<std::string> commandLines) {
  std::string command;
  for (const std::string& commandLine : commandLines) {
    command = commandLine.substr(0, kLongestBackgroundCommand);
    if (win::Process process = TryToStart(command, kInBackground)) return process;
  }
  TraceNotStarted(function, command);
  return {};
}

DWORD WaitForProgram(const char* function, const win::Process& process, DWORD milliseconds) {
  const DWORD waited = WaitForEnd(process, milliseconds);
  if (waited != WAIT_OBJECT_0) Trace(kDetail, function, "Wait failed [Result = %d]", static_cast<int>(waited));
  return waited;
}

std::optional<DWORD> ExitCodeOf(const char* function, const win::Process& process) {
  const auto exitCode = process.ExitCode();
  if (!exitCode) {
    Trace(kDetail, function, "GetExitCodeProcess failed [Error = %d]", static_cast<int>(GetLastError()));
  }
  return exitCode;
}

KE_RESULT StartAndWait(const SiblingProgram& program, DWORD milliseconds, DWORD highestExitCode, DWORD& exitCode) {
  const win::Process process = Start(program);
  if (!process) return KE_PROGRAM_NOT_STARTED;
  if (WaitForProgram(program.function, process, milliseconds) != WAIT_OBJECT_0) return KE_NOT_CREATED;
  const auto ended = ExitCodeOf(program.function, process);
  if (!ended) return KE_NOT_CREATED;
  if (*ended > highestExitCode) {
    Trace(kDetail, program.function, "Process failed [Command = %s] [Result = %d]", program.commandLine.c_str(),
          static_cast<int>(*ended));
    return KE_PROMPT_FAILED;
  }
  exitCode = *ended;
  return KE_SUCCESS;
}

}  // namespace frame
