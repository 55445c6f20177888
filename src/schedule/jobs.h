// The agent's jobs, and the scheduler: a program that keeps jobs and receives them as command lines.
#pragma once

#include <cstdint>
#include <string>

#include "KEResults.h"
#include "schedule/commands.h"

namespace schedule {

/// Runs one scheduler command: its first word names the program, in the folder Scheduler next to the module directory
/// or else in the module directory. Waits up to 90 seconds for its end; a program that takes longer keeps running. The
/// command line is cut at 8198 characters. Traces its start and end; opens its own trace scope.
///
///   KE_MISSING_ARGUMENT       the command is empty
///   KE_BAD_SCHEDULER_COMMAND  there is no blank in it
///   KE_SCHEDULER_NOT_STARTED  the program is in neither place or cannot be started, or the module directory is unknown
///   KE_SCHEDULER_TIMEOUT      it has not ended in time
///   KE_SCHEDULER_FAILED       its exit code is not 0
///   KE_EXCEPTION              an exception was caught: an operation continues with its next command
KE_RESULT CallZumAT(const std::string& command) noexcept;

// Writing jobs. Unless stated otherwise a function returns the code of its last command, as `CallZumAT` does. Nothing
// is retried or undone. A job is written twice, as a new one and as an edited one: created when its task ID is new,
// redefined when it exists. Both commands always run, and the second one's code counts.

/// A window of the day, in minutes since midnight.
struct DayWindow {
  std::int32_t startMinute, endMinute;
};

/// Writes a job at a fixed day and time, as a new one only. KE_MISSING_ARGUMENT without a module; KE_OUT_OF_RANGE for a
/// null day or time, or a task ID below 1.
KE_RESULT KE_SetTask0(const Job& job, const char* startDay, const char* startTime);

/// KE_SetPeriodicTask(), under its trace name: a periodic job whose start depends on its task ID. Then activates the
/// module's boot jobs, and returns that code when it is not 0. KE_OUT_OF_RANGE for a period or task ID below 1.
KE_RESULT SetPeriodicTask(const Job& job, std::int32_t periodMinutes, bool randomWeekday) noexcept;

/// A periodic job within a window of the day; `SetPeriodicTaskRangeDate` takes the recurrence from the caller, null for
/// none, and the window counts when neither end is 0. Then deactivates the module's boot jobs. The first failure
/// counts. KE_MISSING_ARGUMENT without a module; KE_OUT_OF_RANGE for a period or task ID below 1, and for a negative or
/// reversed window.
KE_RESULT SetPeriodicTaskEx(const Job& job, std::int32_t periodMinutes, DayWindow window, bool randomWeekday);
KE_RESULT SetPeriodicTaskRangeDate(const Job& job, std::int32_t periodMinutes, DayWindow window,
                                   const char* periodicData);

/// Removes a job. KE_MISSING_ARGUMENT for a task ID below 1.
KE_RESULT KE_DeleteSheduledTask(std::int32_t taskId);

/// Activate or deactivate the boot jobs of a module, named in any letter case. KE_MISSING_ARGUMENT without a module.
/// The deactivation returns the last code that is not 0, the activation none.
KE_RESULT KE_ActivateRebootTasks(const char* module);
KE_RESULT KE_DeactivateRebootTasks(const char* module);

/// Schedule the agent's periodic jobs, or its boot jobs, for this computer, which may be integrated or not. The last
/// code that is not 0.
KE_RESULT SchedulePeriodicTasks();
KE_RESULT ScheduleRebootTasks();

/// Schedules both and starts the installer helper; its code when that failed, else the last code of the scheduling that
/// is not 0.
KE_RESULT ScheduleDefaultTasks();

// The table of the agent's jobs.

/// The computers on which a job is scheduled.
enum class TaskCondition { kAlways, kIntegrated, kNotIntegrated };

enum class TaskKind { kPeriodic, kBoot };

struct AgentTask {
  Job job;
  TaskKind kind;
  char unit;               // of low and high: 'h' hours, 'm' minutes, 's' seconds
  std::int32_t low, high;  // the delay of a boot job lies between them; the period of a periodic job is high
  TaskCondition condition;
  bool option;  // periodic: on a random weekday; boot: within a weekly window
};

inline constexpr TaskKind kPeriodic = TaskKind::kPeriodic, kBoot = TaskKind::kBoot;

// clang-format off
inline constexpr AgentTask kAgentTasks[] = {
    //  program    module       arguments    ID   kind      unit low high  condition                      option
    {{"KEPLPMNG", "KELTEST",   "",            2}, kPeriodic, 'h',  1,  1, TaskCondition::kIntegrated,    false},
    {{"KEPLPMNG", "KELTEST",   "",            2}, kPeriodic, 'm',  5,  5, TaskCondition::kNotIntegrated, false},
    {{"KEPLPMNG", "KELQTINE",  "-A:GETINFO",  4}, kPeriodic, 'h',  1,  1, TaskCondition::kAlways,        true},
    {{"KEPLPMNG", "KELREPORT", "-R",         12}, kPeriodic, 'm', 60, 60, TaskCondition::kAlways,        false},
    {{"KEPLPMNG", "KELCONF",   "",            7}, kPeriodic, 'h',  1,  1, TaskCondition::kAlways,        false},
    {{"KEPLPMNG", "KELUPD",    "",            8}, kBoot,     'm',  5, 60, TaskCondition::kAlways,        false},
    {{"KEPLPMNG", "KELUPD",    "",            9}, kPeriodic, 'h',  1,  1, TaskCondition::kAlways,        false},
    {{"KEPLPMNG", "KELUPG",    "-CONTINUE",  11}, kPeriodic, 'h',  1,  1, TaskCondition::kAlways,        false},
    {{"KEPWINST", "",          "-FORCE",     13}, kBoot,     's', 90, 90, TaskCondition::kAlways,        false},
    {{"KEPLPMNG", "KELSNET",   "-CONTINUE",  14}, kBoot,     'm',  5,  5, TaskCondition::kAlways,        false},
    {{"KEPLPMNG", "KELREPORT", "-M",         15}, kPeriodic, 'm', 60, 60, TaskCondition::kAlways,        false},
    {{"KEPLPMNG", "KELNTF",    "",           16}, kPeriodic, 'm', 15, 15, TaskCondition::kIntegrated,    false},
};
// clang-format on

/// True when a job is scheduled on a computer that is integrated, or is not.
constexpr bool IsScheduled(const AgentTask& task, bool integrated) noexcept {
  return task.condition == TaskCondition::kAlways || (task.condition == TaskCondition::kIntegrated) == integrated;
}

/// The period of a periodic job in minutes.
constexpr std::int32_t PeriodMinutes(const AgentTask& task) noexcept {
  return task.unit == 'h' ? task.high * 60 : task.unit == 's' ? task.high / 60 : task.high;
}

/// The delay of a boot job in seconds: low at the `fraction` 0, high at 1.
constexpr std::int32_t DelaySeconds(const AgentTask& task, double fraction) noexcept {
  const std::int32_t seconds = task.unit == 'h' ? 3600 : task.unit == 'm' ? 60 : 1;
  const std::int32_t low = task.low * seconds, high = task.high * seconds;
  // NOLINTNEXTLINE(bugprone-incorrect-roundings): the value is never negative, and lround is no constant expression
  return high > low ? low + static_cast<std::int32_t>((high - low) * fraction + 0.5) : low;
}

}  // namespace schedule
