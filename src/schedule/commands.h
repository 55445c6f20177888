// The time clauses of scheduler commands. Times of day are minutes since midnight, periods are minutes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "win/random_number.h"

namespace schedule {

/// The recurrence of a job: every so many weeks or days, else every so many hours and minutes on all days of the week
/// or, with `randomWeekday`, on one from Monday to Friday that `random` selects. The remainder of a period of a day or
/// more is ignored.
std::string MkEveryClause(std::int32_t periodMinutes, bool randomWeekday, win::RandomNumber random);

/// The window of the day in which a job starts, each end clamped to 00:29 and 23:59; the empty text for a negative time
/// and for an end before the start.
std::string MkStartTimeRange(std::int32_t startMinute, std::int32_t endMinute);

/// The start of a periodic job: a minute past midnight that depends on the task ID, and a window of one period that
/// ends between 00:29 and 23:59.
std::string MkStartTimeSpread(std::int32_t periodMinutes, std::int32_t taskId);

/// The start of a boot job: so many seconds after every boot, or after every boot within a weekly window. Begins with a
/// blank.
std::string MkBootClause(std::int32_t delaySeconds, bool weeklyWindow);

// The command lines of the scheduler, a program of its own. Texts are inserted unchanged and not cut.

/// A job of the scheduler: the program that it starts, and under it a module with its arguments. Null texts are empty.
struct Job {
  const char* program;
  const char* module;
  const char* arguments;
  std::int32_t taskId;
};

/// The program that the scheduler starts for the modules of the plug-in manager.
inline constexpr char kPluginManager[] = "KEPLPMNG";

/// The commands that create a job, and that redefine the one of its task ID; `clauses` begin with a blank.
std::string AddJobCommand(const Job& job, std::string_view clauses);
std::string EditJobCommand(const Job& job, std::string_view clauses);

/// The clauses of a job at a fixed day and time, in the scheduler's own notation.
std::string FixedDayClauses(const char* startDay, const char* startTime);

/// The command by which the plug-in manager runs `command` once, so many seconds after the next boot.
std::string NextBootCommand(std::string_view command, std::int32_t delaySeconds);

std::string DeleteJobCommand(std::int32_t taskId);
std::string ActivateJobCommand(std::int32_t taskId);
std::string DeactivateJobCommand(std::int32_t taskId);

}  // namespace schedule
