#include "schedule/scheduler.h"

#include "frame/export_call.h"
#include "frame/module.h"
#include "frame/paths.h"
#include "frame/sibling_program.h"
#include "frame/trace.h"

namespace schedule {
namespace {

using frame::kDetail;

constexpr char kFunction[] = "CallZumAT";
constexpr DWORD kWaitMilliseconds = 90000;

// Where the program's name ends: at the first blank, or at a tab before it. A tab alone does not count.
std::size_t EndOfProgram(const std::string& command) {
  return command.find(' ') == std::string::npos ? std::string::npos : command.find_first_of(" \t");
}

win::Process StartScheduler(const std::string& program, const std::string& rest) {
  const std::string directory = frame::GetModuleDirectory();
  const auto commandIn = [&](const std::string& folder) { return "\"" + folder + program + "\"" + rest; };
  return frame::StartInBackground(
      kFunction, {commandIn(frame::SiblingFolder(directory, "Scheduler")), commandIn(frame::OwnFolder(directory))});
}

KE_RESULT Run(const std::string& command) {
  if (command.empty()) return KE_MISSING_ARGUMENT;
  const std::size_t end = EndOfProgram(command);
  if (end == std::string::npos) return KE_BAD_SCHEDULER_COMMAND;
  const win::Process process = StartScheduler(command.substr(0, end), command.substr(end));
  if (!process) return KE_SCHEDULER_NOT_STARTED;
  if (frame::WaitForProgram(kFunction, process, kWaitMilliseconds) != WAIT_OBJECT_0) return KE_SCHEDULER_TIMEOUT;
  const DWORD exitCode = frame::ExitCodeOf(kFunction, process).value_or(0);
  if (exitCode == 0) return KE_SUCCESS;
  Trace(kDetail, kFunction, "ZumAt finished with exit code: %u", static_cast<unsigned>(exitCode));
  return KE_SCHEDULER_FAILED;
}

}  // namespace

KE_RESULT CallZumAT(const std::string& command) noexcept {
  return frame::ExportCall(kFunction, [&](frame::Export&) { return Run(command); });
}

}  // namespace schedule
