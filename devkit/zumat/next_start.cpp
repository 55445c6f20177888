#include "zumat/next_start.h"

#include <algorithm>

namespace zumat {
namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::minutes;

constexpr Day kEnd{std::chrono::year(10000) / 1 / 1};

/// Every `period` days from the first start on.
Minute NextOfPeriod(Minute first, days period, Minute now) {
  if (first > now) return first;
  const auto passed = (now - first) / minutes(period);
  return first + (passed + 1) * minutes(period);
}

/// The first start of the day that is later than `now`.
std::optional<Minute> NextOfDay(const Job& job, Day day, Minute now) {
  const Minute first = day + minutes(job.start);
  if (first > now) return first;
  if (job.clauses.interval == 0) return std::nullopt;
  const minutes interval(job.clauses.interval);
  const Minute next = first + ((now - first) / interval + 1) * interval;
  if (next >= day + days(1)) return std::nullopt;
  return next;
}

/// Today's starts may be over; then the same day of the next week is the last one to look at.
std::optional<Minute> NextOfWeek(const Job& job, Day first, Minute now) {
  const Day from = std::max(first, floor<days>(now));
  for (Day day = from; day <= from + days(7); day += days(1)) {
    const unsigned weekday = std::chrono::weekday(day).c_encoding();
    if (!(job.clauses.weekdays >> weekday & 1)) continue;
    if (const auto start = NextOfDay(job, day, now)) return start;
  }
  return std::nullopt;
}

std::optional<Minute> NextOfAny(const Job& job, Day first, Minute now) {
  const Minute firstStart = first + minutes(job.start);
  switch (job.clauses.recurrence) {
    case Recurrence::kOnce:
      return firstStart > now ? std::optional(firstStart) : std::nullopt;
    case Recurrence::kWeekdays:
      return NextOfWeek(job, first, now);
    case Recurrence::kDays:
      return NextOfPeriod(firstStart, days(job.clauses.count), now);
    case Recurrence::kWeeks:
      return NextOfPeriod(firstStart, days(7) * job.clauses.count, now);
    case Recurrence::kEveryBoot:
    case Recurrence::kNextBoot:
      break;
  }
  return std::nullopt;
}

}  // namespace

std::optional<Minute> NextStart(const Job& job, Minute now) {
  const auto next = NextOfAny(job, job.clauses.startDay.value_or(job.since), now);
  return next && *next < kEnd ? next : std::nullopt;
}

}  // namespace zumat
