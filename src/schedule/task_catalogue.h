// Scheduling the agent's own tasks.
#pragma once

#include "KELUtils.h"

namespace schedule {

/// Schedule the periodic tasks, or the tasks after each boot, that this computer is to have; one that is not integrated
/// has others than an integrated one. The last code that is not 0.
KE_RESULT SchedulePeriodicTasks();
KE_RESULT ScheduleRebootTasks();

/// Schedules both and starts the installer helper; its code when that failed, else the last code of the scheduling that
/// is not 0.
KE_RESULT ScheduleDefaultTasks();

}  // namespace schedule
