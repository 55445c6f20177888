// Running the scheduler: a program that keeps the jobs and is told about them by command lines.
#pragma once

#include <cstdint>
#include <string>

#include "KEResults.h"
#include "schedule/commands.h"

namespace schedule {

/// Runs one scheduler command: its first word names the program, which is looked for in the folder Scheduler beside the
/// module directory and then in the module directory. Waits up to 90 seconds for its end; one that takes longer is left
/// running. The command line is cut at 8198 characters. Traces its start and end; opens its own trace scope.
///
///   KE_MISSING_ARGUMENT       the command is empty
///   KE_BAD_SCHEDULER_COMMAND  there is no blank in it
///   KE_SCHEDULER_NOT_STARTED  the program is in neither place or cannot be started, or the module directory is unknown
///   KE_SCHEDULER_TIMEOUT      it has not ended in time
///   KE_SCHEDULER_FAILED       its exit code is not 0
///   KE_EXCEPTION              an exception was caught, so that an operation goes on with its next command
KE_RESULT CallZumAT(const std::string& command) noexcept;

// The workers behind the scheduling exports: each writes a job with one or two scheduler commands.
//
// Unless a function says otherwise it returns the code of its last command, as `CallZumAT` does. Nothing is repeated
// and nothing undone. A job is written twice, first as a new one and then as an edited one, so that it is created when
// its task ID is new and redefined when it exists; both commands always run, and the second one's code counts.

/// A window of the day, in minutes since midnight.
struct DayWindow {
  std::int32_t startMinute, endMinute;
};

/// One job at a fixed day and time, added only. KE_MISSING_ARGUMENT without a module; KE_OUT_OF_RANGE for a null day or
/// time, or a task ID below 1.
KE_RESULT KE_SetTask0(const Job& job, const char* startDay, const char* startTime);

/// KE_SetPeriodicTask(), under its trace name: a periodic job whose start is spread by its task ID; then activates the
/// module's boot jobs, and returns the code of that when it is not 0. KE_OUT_OF_RANGE for a period or task ID below 1.
KE_RESULT SetPeriodicTask(const Job& job, std::int32_t periodMinutes, bool randomWeekday) noexcept;

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

// Scheduling the agent's own tasks.

/// Schedule the periodic tasks, or the tasks after each boot, that this computer is to have; one that is not integrated
/// has others than an integrated one. The last code that is not 0.
KE_RESULT SchedulePeriodicTasks();
KE_RESULT ScheduleRebootTasks();

/// Schedules both and starts the installer helper; its code when that failed, else the last code of the scheduling that
/// is not 0.
KE_RESULT ScheduleDefaultTasks();

}  // namespace schedule
