#include "schedule/clauses.h"

#include <cstdio>
#include <iterator>

namespace schedule {
namespace {

constexpr std::int32_t kMinutesOfHour = 60, kHoursOfDay = 24, kDaysOfWeek = 7;
constexpr std::int32_t kEarliest = 29;                              // 00:29
constexpr std::int32_t kLatest = kHoursOfDay * kMinutesOfHour - 1;  // 23:59
constexpr std::int32_t kSpreadMinutes = 15;
constexpr const char* kWorkdays[] = {"M", "T", "W", "Th", "F"};
constexpr char kAllDays[] = "Su,M,T,W,Th,F,S";

std::int32_t Clamped(std::int64_t minute) noexcept {
  if (minute < kEarliest) return kEarliest;
  return static_cast<std::int32_t>(minute > kLatest ? kLatest : minute);
}

// "HH:MM" with at least two digits each.
std::string TimeOfDay(std::int32_t minute) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2i:%.2i", static_cast<int>(minute / kMinutesOfHour),
                static_cast<int>(minute % kMinutesOfHour));
  return text;
}

}  // namespace

std::string MkEveryClause(std::int32_t periodMinutes, bool randomWeekday, frame::RandomNumber random) {
  const std::int32_t minutes = periodMinutes % kMinutesOfHour, allHours = periodMinutes / kMinutesOfHour;
  const std::int32_t hours = allHours % kHoursOfDay, allDays = allHours / kHoursOfDay;
  const std::int32_t days = allDays % kDaysOfWeek, weeks = allDays / kDaysOfWeek;
  if (weeks >= 1) return "-Every:Weeks:" + std::to_string(weeks);
  if (days > 0) return "-Every:Days:" + std::to_string(days);
  const char* const weekday = randomWeekday ? kWorkdays[random() % std::size(kWorkdays)] : kAllDays;
  return "-EveryHoursMins:" + std::to_string(hours) + ":" + std::to_string(minutes) + " -Every:" + weekday;
}

std::string MkStartTimeRange(std::int32_t startMinute, std::int32_t endMinute) {
  if (startMinute < 0 || endMinute < 0 || endMinute < startMinute) return {};
  return "-StartTime:" + TimeOfDay(Clamped(startMinute)) + " -StartTimeRnd:" + TimeOfDay(Clamped(endMinute));
}

std::string MkStartTimeSpread(std::int32_t periodMinutes, std::int32_t taskId) {
  const std::int32_t offset = taskId % kSpreadMinutes;
  return "-StartTime:" + TimeOfDay(offset) +
         " -StartTimeRnd:" + TimeOfDay(Clamped(std::int64_t{offset} + periodMinutes - 1));
}

std::string MkBootClause(std::int32_t delaySeconds, bool weeklyWindow) {
  return " -Every:Boot:" + std::to_string(delaySeconds) + (weeklyWindow ? " -EveryWindow:Days:7" : "");
}

}  // namespace schedule
