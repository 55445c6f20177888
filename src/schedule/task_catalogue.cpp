#include "schedule/task_catalogue.h"

#include "frame/export_call.h"
#include "frame/random_number.h"
#include "schedule/jobs.h"
#include "schedule/task_table.h"
#include "services/agent_programs.h"

namespace schedule {
namespace {

constexpr double kLargestRandomNumber = 32767.0;

// The last code that is not 0 of `set`, called for each task of a kind that this computer is to have. An exception ends
// only the task that it comes from.
template <typename Set>
KE_RESULT ForTasks(TaskKind kind, Set set) {
  const bool integrated = services::IsComputerIntegrated();
  KE_RESULT result = KE_SUCCESS;
  for (const AgentTask& task : kAgentTasks) {
    if (task.kind != kind || !IsScheduled(task, integrated)) continue;
    if (const KE_RESULT done = frame::RunStep([&] { return set(task); }); done != KE_SUCCESS) result = done;
  }
  return result;
}

}  // namespace

KE_RESULT SchedulePeriodicTasks() {
  return ForTasks(kPeriodic, [](const AgentTask& task) {
    return KE_SetPeriodicTask(task.program, task.module, task.arguments, task.taskId, PeriodMinutes(task), task.option);
  });
}

KE_RESULT ScheduleRebootTasks() {
  const double fraction = frame::g_randomNumber() / kLargestRandomNumber;
  return ForTasks(kBoot, [&](const AgentTask& task) {
    return KE_SetRebootTask({task.program, task.module, task.arguments, task.taskId}, DelaySeconds(task, fraction),
                            task.option);
  });
}

KE_RESULT ScheduleDefaultTasks() {
  const KE_RESULT boot = frame::RunStep(ScheduleRebootTasks);
  const KE_RESULT periodic = frame::RunStep(SchedulePeriodicTasks);
  const KE_RESULT helper = KE_LaunchKEPWInst();
  if (helper != KE_SUCCESS) return helper;
  return periodic != KE_SUCCESS ? periodic : boot;
}

}  // namespace schedule
