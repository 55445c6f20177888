// The time clauses of scheduler commands. Times of day are minutes since midnight, periods are minutes.
#pragma once

#include <cstdint>
#include <string>

#include "frame/random_number.h"

namespace schedule {

/// When a job recurs: every so many weeks or days, else every so many hours and minutes on all days of the week or,
/// with `randomWeekday`, on one from Monday to Friday that `random` picks. What is left over of a period of a day or
/// more is dropped.
std::string MkEveryClause(std::int32_t periodMinutes, bool randomWeekday, frame::RandomNumber random);

/// The window of the day in which a job starts, each end brought between 00:29 and 23:59; the empty text for a negative
/// time and for an end before the start.
std::string MkStartTimeRange(std::int32_t startMinute, std::int32_t endMinute);

/// The start of a periodic job: in a minute past midnight that the task ID determines, within a window of one period
/// that ends between 00:29 and 23:59.
std::string MkStartTimeSpread(std::int32_t periodMinutes, std::int32_t taskId);

/// When a boot job runs: so many seconds after every boot, or after every boot within a weekly window. Begins with a
/// blank.
std::string MkBootClause(std::int32_t delaySeconds, bool weeklyWindow);

}  // namespace schedule
