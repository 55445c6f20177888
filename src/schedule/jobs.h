// The workers behind the scheduling exports: each writes a job with one or two scheduler commands.
//
// Unless a function says otherwise it returns the code of its last command, as `CallZumAT` does. Nothing is repeated
// and nothing undone. A job is written twice, first as a new one and then as an edited one, so that it is created when
// its task ID is new and redefined when it exists; both commands always run, and the second one's code counts.
#pragma once

#include <cstdint>

#include "KELUtils.h"
#include "schedule/commands.h"

namespace schedule {

/// A window of the day, in minutes since midnight.
struct DayWindow {
  std::int32_t startMinute, endMinute;
};

/// One job at a fixed day and time, added only. KE_MISSING_ARGUMENT without a module; KE_OUT_OF_RANGE for a null day or
/// time, or a task ID below 1.
KE_RESULT KE_SetTask0(const Job& job, const char* startDay, const char* startTime);

/// A periodic job whose start is spread by its task ID; then activates the module's boot jobs, and returns the code of
/// that when it is not 0. Checks nothing.
KE_RESULT SetPeriodicTask(const Job& job, std::int32_t periodMinutes, bool randomWeekday);

/// Whether a job can be periodic within a window: KE_SUCCESS; KE_MISSING_ARGUMENT without a module; KE_OUT_OF_RANGE for
/// a period or task ID below 1, and for a negative or reversed window.
KE_RESULT CheckWindowedTask(const Job& job, std::int32_t periodMinutes, DayWindow window);

/// A checked job that is periodic within a window of the day.
KE_RESULT KE_SetPeriodicTaskEx0(const Job& job, std::int32_t periodMinutes, DayWindow window, bool randomWeekday);

/// The same with a recurrence that the caller wrote, null for none; the window counts when neither end is 0.
KE_RESULT KE_SetPeriodicTaskPeriodicData0(const Job& job, DayWindow window, const char* periodicData);

/// A job that runs after every boot. Checks nothing.
KE_RESULT KE_SetRebootTask(const Job& job, std::int32_t delaySeconds, bool weeklyWindow);

/// Removes a job. KE_MISSING_ARGUMENT for a task ID below 1.
KE_RESULT KE_DeleteSheduledTask(std::int32_t taskId);

/// Switch the boot jobs of a module, named in any letter case, on or off. KE_MISSING_ARGUMENT without a module.
/// Switching off returns the last code that is not 0, switching on never returns one.
KE_RESULT KE_ActivateRebootTasks(const char* module);
KE_RESULT KE_DeactivateRebootTasks(const char* module);

}  // namespace schedule
