#include "siblings/programs.h"

#include <string>
#include <string_view>

#include "KEAction.h"
#include "siblings/binder.h"
#include "siblings/sibling_table.h"
#include "text/paths.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/process.h"

namespace siblings {

namespace {

constexpr std::size_t kLongestBackgroundCommand = 8198;
constexpr win::StartOptions kInBackground{.application = nullptr,
                                          .creationFlags = CREATE_NEW_PROCESS_GROUP | DETACHED_PROCESS,
                                          .startupFlags = STARTF_FORCEOFFFEEDBACK};

bool HasFullPath(const std::string& commandLine, const win::StartOptions& options) {
  if (options.application) return text::IsFullPath(options.application);
  return commandLine.starts_with('"') && text::IsFullPath(std::string_view(commandLine).substr(1));
}

win::Process TryToStart(const std::string& commandLine, const win::StartOptions& options) {
  return HasFullPath(commandLine, options) ? win::StartProcess(commandLine, options) : win::Process();
}

void TraceNotStarted(const char* function, const std::string& commandLine) noexcept {
  trace::Trace(trace::kDetail, function, "CreateProcess failed [Command = %s]", commandLine.c_str());
}

}  // namespace

void TraceCommand(const SiblingProgram& program) noexcept {
  trace::Trace(trace::kDetail, program.function, "CreateProcess [Command = %s]", program.commandLine.c_str());
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
  const DWORD waited = win::WaitForEnd(process, milliseconds);
  if (waited != WAIT_OBJECT_0)
    trace::Trace(trace::kDetail, function, "Wait failed [Result = %d]", static_cast<int>(waited));
  return waited;
}

std::optional<DWORD> ExitCodeOf(const char* function, const win::Process& process) {
  const auto exitCode = process.ExitCode();
  if (!exitCode) {
    trace::Trace(trace::kDetail, function, "GetExitCodeProcess failed [Error = %d]", static_cast<int>(GetLastError()));
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
    trace::Trace(trace::kDetail, program.function, "Process failed [Command = %s] [Result = %d]",
                 program.commandLine.c_str(), static_cast<int>(*ended));
    return KE_PROMPT_FAILED;
  }
  exitCode = *ended;
  return KE_SUCCESS;
}

namespace {

constexpr char kFunction[] = "ExecuteLocalProcessAction";

#define KE_ACTION_FUNCTIONS(ROW_CALLED, ROW_UNCALLED) ROW_CALLED(Do, kRequired)
KE_FUNCTION_TABLE(ActionTable, KE_ACTION_FUNCTIONS);

KE_RESULT Execute(const char* name, std::uint32_t first, std::uint32_t second) {
  if (name == nullptr) return KE_OUT_OF_RANGE;
  const auto folder = win::FolderOf(name);
  const std::string file = std::string(name) + ".dll";
  SiblingSearch search(kFunction, file.c_str());
  BoundModule<ActionTable> action;
  if (!action.Bind(folder ? folder->c_str() : nullptr, search)) return KE_MODULE_NOT_LOADED;
  return action.functions.Do(first, second);
}

}  // namespace

KE_RESULT ExecuteLocalProcessAction(const char* name, std::uint32_t first, std::uint32_t second) {
  trace::Trace(trace::kInfo, kFunction, "Function start");
  const KE_RESULT result = Execute(name, first, second);
  trace::Trace(trace::kInfo, kFunction, "Function end. Return code (%i)", static_cast<int>(result));
  return result;
}

std::string QuotedCommand(const std::string& program, const std::string& arguments) {
  return "\"" + program + "\" " + arguments;
}

KE_RESULT LaunchInstallHelper() noexcept {
  return trace::ExportCall("LaunchKEPWinst", [](trace::Export& self) -> KE_RESULT {
    const auto commandIn = [](const char* folder) {
      return QuotedCommand(win::ComponentFile(folder, kInstallHelper.file), "-FORCE");
    };
    const bool started = static_cast<bool>(
        StartInBackground(self.name, {commandIn(kInstallHelper.folder), commandIn(kInstallHelper.fallback)}));
    return started ? KE_SUCCESS : KE_INSTALL_HELPER_NOT_STARTED;
  });
}

}  // namespace siblings
