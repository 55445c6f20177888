#include "schedule/jobs.h"

#include <cstring>
#include <string>

#include "frame/export_call.h"
#include "frame/random_number.h"
#include "frame/text.h"
#include "schedule/clauses.h"
#include "schedule/scheduler.h"
#include "schedule/task_table.h"

namespace schedule {
namespace {

using frame::RunStep;

KE_RESULT AddThenEdit(const Job& job, const std::string& clauses) {
  RunStep([&] { return CallZumAT(AddJobCommand(job, clauses)); });
  return CallZumAT(EditJobCommand(job, clauses));
}

// Runs a command for each boot job of a module; the last code that is not 0.
KE_RESULT ForBootJobs(const char* module, std::string (*command)(std::int32_t taskId)) {
  KE_RESULT result = KE_SUCCESS;
  for (const AgentTask& task : kAgentTasks) {
    if (task.kind != kBoot || _stricmp(task.module, module) != 0) continue;
    const KE_RESULT ran = RunStep([&] { return CallZumAT(command(task.taskId)); });
    if (ran != KE_SUCCESS) result = ran;
  }
  return result;
}

}  // namespace

KE_RESULT KE_SetTask0(const Job& job, const char* startDay, const char* startTime) {
  if (frame::IsBlank(job.module)) return KE_MISSING_ARGUMENT;
  if (startDay == nullptr || startTime == nullptr || job.taskId < 1) return KE_OUT_OF_RANGE;
  return CallZumAT(AddJobCommand(job, FixedDayClauses(startDay, startTime)));
}

KE_RESULT SetPeriodicTask(const Job& job, std::int32_t periodMinutes, bool randomWeekday) {
  const KE_RESULT result = RunStep([&] {
    return AddThenEdit(job, " " + MkEveryClause(periodMinutes, randomWeekday, frame::g_randomNumber) + " " +
                                MkStartTimeSpread(periodMinutes, job.taskId));
  });
  const KE_RESULT activated = KE_ActivateRebootTasks(job.module);
  return activated != KE_SUCCESS ? activated : result;
}

KE_RESULT CheckWindowedTask(const Job& job, std::int32_t periodMinutes, DayWindow window) {
  if (frame::IsBlank(job.module)) return KE_MISSING_ARGUMENT;
  const bool inRange =
      periodMinutes > 0 && window.startMinute >= 0 && window.endMinute >= window.startMinute && job.taskId > 0;
  return inRange ? KE_SUCCESS : KE_OUT_OF_RANGE;
}

KE_RESULT KE_SetPeriodicTaskEx0(const Job& job, std::int32_t periodMinutes, DayWindow window, bool randomWeekday) {
  return AddThenEdit(job, " " + MkEveryClause(periodMinutes, randomWeekday, frame::g_randomNumber) + " " +
                              MkStartTimeRange(window.startMinute, window.endMinute));
}

KE_RESULT KE_SetPeriodicTaskPeriodicData0(const Job& job, DayWindow window, const char* periodicData) {
  std::string clauses = std::string(" ") + (periodicData ? periodicData : "");
  if (window.startMinute != 0 && window.endMinute != 0) {
    clauses += " " + MkStartTimeRange(window.startMinute, window.endMinute);
  }
  return AddThenEdit(job, clauses);
}

KE_RESULT KE_SetRebootTask(const Job& job, std::int32_t delaySeconds, bool weeklyWindow) {
  return AddThenEdit(job, MkBootClause(delaySeconds, weeklyWindow));
}

KE_RESULT KE_DeleteSheduledTask(std::int32_t taskId) {
  if (taskId <= 0) return KE_MISSING_ARGUMENT;
  return CallZumAT(DeleteJobCommand(taskId));
}

KE_RESULT KE_ActivateRebootTasks(const char* module) {
  if (frame::IsBlank(module)) return KE_MISSING_ARGUMENT;
  ForBootJobs(module, ActivateJobCommand);
  return KE_SUCCESS;
}

KE_RESULT KE_DeactivateRebootTasks(const char* module) {
  if (frame::IsBlank(module)) return KE_MISSING_ARGUMENT;
  return ForBootJobs(module, DeactivateJobCommand);
}

}  // namespace schedule
