#include "schedule/upgrade_completion.h"

#include <cstdio>

#include "frame/export_call.h"
#include "frame/sibling_program.h"
#include "frame/trace.h"
#include "schedule/jobs.h"
#include "schedule/task_catalogue.h"
#include "services/agent_programs.h"
#include "store/integra_store.h"

namespace schedule {
namespace {

using frame::kAlways;
using frame::kDetail;

constexpr std::uint32_t kSuccessRebootRequired = 3010;  // of the platform's installer: ERROR_SUCCESS_REBOOT_REQUIRED
constexpr std::int32_t kRetiredReportTask = 5;

/// One job of the upgrade, and what is traced when it fails.
struct UpgradeJob {
  KE_RESULT (*schedule)();
  const char* failure;
};

constexpr UpgradeJob kUpgradeJobs[] = {
    {ScheduleRebootTasks, "Reprogramming ZUMat task error, not possible edit KELUpdTask [TaskId:8] - Error Code: %d"},
    {SchedulePeriodicTasks, "Reprogramming ZUMat periodic tasks error - Error Code: %d"},
    {[] { return KE_SetPeriodicTask(kPluginManager, "KELQTINE", "-A:GETINFO", 4, 60, 1); },
     "Reprogramming ZUMat task error, not possible edit KELQtineTask [TaskId:4] - Error Code: %d"},
    {[] { return KE_DeleteSheduledTask(kRetiredReportTask); },
     "Deleting ZUMat task error, not possible delete KELReportTask -S [TaskId:5] - Error Code: %d"},
    {[] { return KE_SetPeriodicTask(kPluginManager, "KELREPORT", "-M", 15, 60, 0); },
     "Reprogramming ZUMat task error, not possible edit KELReportTask [TaskId:15] - Error Code: %d"},
};

bool Succeeded(std::uint32_t resultCode) { return resultCode == 0 || resultCode == kSuccessRebootRequired; }

}  // namespace

KE_RESULT CompleteUpgrade(const char* function, std::uint32_t resultCode, const char* version) {
  frame::RunStep(services::IntegrateComputerKelTest);
  for (const UpgradeJob& job : kUpgradeJobs) {
    const KE_RESULT scheduled = frame::RunStep(job.schedule);
    if (scheduled != KE_SUCCESS) Trace(kDetail, function, job.failure, static_cast<int>(scheduled));
  }
  KE_RESULT result = KE_SUCCESS;
  if (Succeeded(resultCode)) result = KE_SetAgentVersion(version);
  if (result == KE_SUCCESS) result = KE_ScheduleUpgradeComplete(static_cast<std::int32_t>(resultCode), version);
  if (frame::RunStep([&] { return store::KeepAsStartCopy(function); }) != KE_SUCCESS)
    Trace(kAlways, function, "Error copying from Integra.start");
  return result;
}

KE_RESULT StartUpgradeCompletion(const char* function, std::int32_t resultCode, const char* version) {
  char arguments[1024];
  std::snprintf(arguments, sizeof arguments, "KELUpg -FORCE -CONTINUE -UPGCOMPLETE:%d -VERSION:%s",
                static_cast<int>(resultCode), version ? version : "");
  const std::string command = services::PluginManagerCommand(arguments);
  Trace(kDetail, function, "CommandLine launched by KE_ScheduleUpgradeComplete: [%s]", command.c_str());
  return frame::StartInBackground(function, {command}) ? KE_SUCCESS : KE_PROGRAM_NOT_STARTED;
}

}  // namespace schedule
