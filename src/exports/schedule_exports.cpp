// The exports of the job scheduler.

#include <cstdint>

#include "KELUtils.h"
#include "schedule/jobs.h"
#include "text/text.h"
#include "trace/trace.h"
#include "upgrade/upgrade.h"

using schedule::kPluginManager;
using trace::Export;
using trace::ExportCall;

KE_RESULT KE_API KE_SetTask(const char* program, const char* module, const char* arguments, int32_t taskId,
                            const char* startDay, const char* startTime) {
  return ExportCall(__func__, [&](Export&) {
    return schedule::KE_SetTask0({program, module, arguments, taskId}, startDay, startTime);
  });
}

KE_RESULT KE_API KE_SetPeriodicTask(const char* program, const char* module, const char* arguments, int32_t taskId,
                                    int32_t periodMinutes, int32_t randomWeekday) {
  return schedule::SetPeriodicTask({program, module, arguments, taskId}, periodMinutes, randomWeekday != 0);
}

KE_RESULT KE_API KE_SetPeriodicTaskEx(const char* module, const char* arguments, int32_t taskId, int32_t periodMinutes,
                                      int32_t startMinute, int32_t endMinute, int32_t randomWeekday) {
  return ExportCall(__func__, [&](Export&) {
    return schedule::SetPeriodicTaskEx({kPluginManager, module, arguments, taskId}, periodMinutes,
                                       {startMinute, endMinute}, randomWeekday != 0);
  });
}

KE_RESULT KE_API KE_SetPeriodicTaskRangeDate(const char* module, const char* arguments, int32_t taskId,
                                             int32_t periodMinutes, int32_t startMinute, int32_t endMinute,
                                             const char* periodicData) {
  return ExportCall(__func__, [&](Export&) {
    return schedule::SetPeriodicTaskRangeDate({kPluginManager, module, arguments, taskId}, periodMinutes,
                                              {startMinute, endMinute}, periodicData);
  });
}

KE_RESULT KE_API KE_ScheduleTaskReboot(const char* command, int32_t delaySeconds, uint32_t* result) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    if (text::IsBlank(command) || delaySeconds < 0 || result == nullptr) return KE_OUT_OF_RANGE;
    *result = 0;
    const KE_RESULT ran = schedule::CallZumAT(schedule::NextBootCommand(command, delaySeconds));
    return ran == KE_SUCCESS ? KE_SUCCESS : KE_SCHEDULER_NOT_STARTED;
  });
}

KE_RESULT KE_API KE_RemoveScheduleTaskReboot(uint32_t) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT { return KE_SUCCESS; });
}

KE_RESULT KE_API KE_ScheduleDefaultTasks(void) {
  return ExportCall(__func__, [&](Export&) { return schedule::ScheduleDefaultTasks(); });
}

KE_RESULT KE_API KE_UpgradeComplete(uint32_t resultCode, const char* version) {
  return ExportCall(__func__, [&](Export& self) { return upgrade::CompleteUpgrade(self.name, resultCode, version); });
}

KE_RESULT KE_API KE_ScheduleUpgradeComplete(int32_t resultCode, const char* version) {
  return upgrade::ScheduleUpgradeComplete(resultCode, version);
}
