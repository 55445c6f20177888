#include "schedule/jobs.h"

#include <cstring>
#include <string>

#include "siblings/programs.h"
#include "siblings/sibling_table.h"
#include "store/accessors.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/random_number.h"

namespace schedule {

namespace {

using trace::kDetail;
using trace::RunStep;

constexpr char kFunction[] = "CallZumAT";
constexpr DWORD kWaitMilliseconds = 90000;
constexpr double kLargestRandomNumber = 32767.0;

// Where the program's name ends: at the first blank, or at a tab before it. A tab alone does not count.
std::size_t EndOfProgram(const std::string& command) {
  return command.find(' ') == std::string::npos ? std::string::npos : command.find_first_of(" \t");
}

win::Process StartScheduler(const std::string& program, const std::string& rest) {
  const auto commandIn = [&](const char* folder) { return "\"" + win::ComponentFile(folder, program) + "\"" + rest; };
  return siblings::StartInBackground(
      kFunction, {commandIn(siblings::kScheduler.folder), commandIn(siblings::kScheduler.fallback)});
}

KE_RESULT Run(const std::string& command) {
  if (command.empty()) return KE_MISSING_ARGUMENT;
  const std::size_t end = EndOfProgram(command);
  if (end == std::string::npos) return KE_BAD_SCHEDULER_COMMAND;
  const win::Process process = StartScheduler(command.substr(0, end), command.substr(end));
  if (!process) return KE_SCHEDULER_NOT_STARTED;
  if (siblings::WaitForProgram(kFunction, process, kWaitMilliseconds) != WAIT_OBJECT_0) return KE_SCHEDULER_TIMEOUT;
  const DWORD exitCode = siblings::ExitCodeOf(kFunction, process).value_or(0);
  if (exitCode == 0) return KE_SUCCESS;
  Trace(kDetail, kFunction, "ZumAt finished with exit code: %u", static_cast<unsigned>(exitCode));
  return KE_SCHEDULER_FAILED;
}

KE_RESULT AddThenEdit(const Job& job, const std::string& clauses) {
  RunStep([&] { return CallZumAT(AddJobCommand(job, clauses)); });
  return CallZumAT(EditJobCommand(job, clauses));
}

// Runs a command for each boot job of a module; the last code that is not 0.
KE_RESULT ForBootJobs(const char* module, std::string (*command)(std::int32_t taskId)) {
  KE_RESULT result = KE_SUCCESS;
  for (const AgentTask& task : kAgentTasks) {
    if (task.kind != kBoot || !text::SameName(task.job.module, module)) continue;
    const KE_RESULT ran = RunStep([&] { return CallZumAT(command(task.job.taskId)); });
    if (ran != KE_SUCCESS) result = ran;
  }
  return result;
}

std::string EveryClause(std::int32_t periodMinutes, bool randomWeekday) {
  return " " + MkEveryClause(periodMinutes, randomWeekday, win::g_randomNumber) + " ";
}

// Checks and writes a job that is periodic within a window, with the text of `clauses()`, and deactivates the boot jobs
// of its module.
template <typename Clauses>
KE_RESULT SetWindowedTask(const Job& job, std::int32_t periodMinutes, DayWindow window, Clauses clauses) {
  if (text::IsBlank(job.module)) return KE_MISSING_ARGUMENT;
  if (periodMinutes < 1 || window.startMinute < 0 || window.endMinute < window.startMinute || job.taskId < 1)
    return KE_OUT_OF_RANGE;
  const KE_RESULT result = RunStep([&] { return AddThenEdit(job, clauses()); });
  const KE_RESULT deactivated = KE_DeactivateRebootTasks(job.module);
  return result != KE_SUCCESS ? result : deactivated;
}

// The last code that is not 0 of `set`, called for each job of a kind that this computer is to have. An exception ends
// only the job that it comes from.
template <typename Set>
KE_RESULT ForTasks(TaskKind kind, Set set) {
  const bool integrated = store::IsComputerIntegrated();
  KE_RESULT result = KE_SUCCESS;
  for (const AgentTask& task : kAgentTasks) {
    if (task.kind != kind || !IsScheduled(task, integrated)) continue;
    if (const KE_RESULT done = RunStep([&] { return set(task); }); done != KE_SUCCESS) result = done;
  }
  return result;
}

}  // namespace

KE_RESULT CallZumAT(const std::string& command) noexcept {
  return trace::ExportCall(kFunction, [&](trace::Export&) { return Run(command); });
}

KE_RESULT KE_SetTask0(const Job& job, const char* startDay, const char* startTime) {
  if (text::IsBlank(job.module)) return KE_MISSING_ARGUMENT;
  if (startDay == nullptr || startTime == nullptr || job.taskId < 1) return KE_OUT_OF_RANGE;
  return CallZumAT(AddJobCommand(job, FixedDayClauses(startDay, startTime)));
}

KE_RESULT SetPeriodicTask(const Job& job, std::int32_t periodMinutes, bool randomWeekday) noexcept {
  return trace::ExportCall("KE_SetPeriodicTask", [&](trace::Export&) -> KE_RESULT {
    if (periodMinutes < 1 || job.taskId < 1) return KE_OUT_OF_RANGE;
    const KE_RESULT result = RunStep([&] {
      return AddThenEdit(job, EveryClause(periodMinutes, randomWeekday) + MkStartTimeSpread(periodMinutes, job.taskId));
    });
    const KE_RESULT activated = KE_ActivateRebootTasks(job.module);
    return activated != KE_SUCCESS ? activated : result;
  });
}

KE_RESULT SetPeriodicTaskEx(const Job& job, std::int32_t periodMinutes, DayWindow window, bool randomWeekday) {
  return SetWindowedTask(job, periodMinutes, window, [&] {
    return EveryClause(periodMinutes, randomWeekday) + MkStartTimeRange(window.startMinute, window.endMinute);
  });
}

KE_RESULT SetPeriodicTaskRangeDate(const Job& job, std::int32_t periodMinutes, DayWindow window,
                                   const char* periodicData) {
  return SetWindowedTask(job, periodMinutes, window, [&] {
    std::string clauses = std::string(" ") + (periodicData ? periodicData : "");
    if (window.startMinute == 0 || window.endMinute == 0) return clauses;
    return clauses + " " + MkStartTimeRange(window.startMinute, window.endMinute);
  });
}

KE_RESULT KE_DeleteSheduledTask(std::int32_t taskId) {
  return taskId < 1 ? KE_RESULT{KE_MISSING_ARGUMENT} : CallZumAT(DeleteJobCommand(taskId));
}

KE_RESULT KE_ActivateRebootTasks(const char* module) {
  if (text::IsBlank(module)) return KE_MISSING_ARGUMENT;
  ForBootJobs(module, ActivateJobCommand);
  return KE_SUCCESS;
}

KE_RESULT KE_DeactivateRebootTasks(const char* module) {
  return text::IsBlank(module) ? KE_RESULT{KE_MISSING_ARGUMENT} : ForBootJobs(module, DeactivateJobCommand);
}

KE_RESULT SchedulePeriodicTasks() {
  return ForTasks(kPeriodic,
                  [](const AgentTask& task) { return SetPeriodicTask(task.job, PeriodMinutes(task), task.option); });
}

KE_RESULT ScheduleRebootTasks() {
  const double fraction = win::g_randomNumber() / kLargestRandomNumber;
  return ForTasks(kBoot, [&](const AgentTask& task) {
    return AddThenEdit(task.job, MkBootClause(DelaySeconds(task, fraction), task.option));
  });
}

KE_RESULT ScheduleDefaultTasks() {
  const KE_RESULT boot = RunStep(ScheduleRebootTasks);
  const KE_RESULT periodic = RunStep(SchedulePeriodicTasks);
  const KE_RESULT helper = siblings::LaunchInstallHelper();
  if (helper != KE_SUCCESS) return helper;
  return periodic != KE_SUCCESS ? periodic : boot;
}

}  // namespace schedule
