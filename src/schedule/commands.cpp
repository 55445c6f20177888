#include "schedule/commands.h"

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

constexpr char kScheduler[] = "zumat ";

std::string_view Text(const char* text) { return text ? text : std::string_view(); }

std::string TaskSwitch(std::int32_t taskId) { return "-TaskID:" + std::to_string(taskId); }

// PROGRAM:"MODULE ARGUMENTS", or PROGRAM:"MODULE" without arguments.
std::string JobText(const Job& job) {
  std::string text(Text(job.program));
  text.append(":\"").append(Text(job.module));
  if (!Text(job.arguments).empty()) text.append(" ").append(Text(job.arguments));
  return text += '"';
}

std::string JobCommand(const char* verb, const Job& job, std::string_view clauses) {
  return kScheduler + TaskSwitch(job.taskId) + verb + JobText(job).append(clauses);
}

}  // namespace

std::string MkEveryClause(std::int32_t periodMinutes, bool randomWeekday, win::RandomNumber random) {
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

std::string AddJobCommand(const Job& job, std::string_view clauses) { return JobCommand(" -addjob:", job, clauses); }

std::string EditJobCommand(const Job& job, std::string_view clauses) {
  return JobCommand(" -editjob:0:", job, clauses);
}

std::string FixedDayClauses(const char* startDay, const char* startTime) {
  return std::string(" -StartDay:").append(startDay).append(" -StartTime:").append(startTime);
}

std::string NextBootCommand(std::string_view command, std::int32_t delaySeconds) {
  std::string text = kScheduler;
  text.append("-addjob:").append(kPluginManager).append(":\"").append(command);
  return text + "\" -Next:Boot:" + std::to_string(delaySeconds);
}

std::string DeleteJobCommand(std::int32_t taskId) {
  return kScheduler + ("-DeleteJob " + TaskSwitch(taskId)) + " -YES";
}

std::string ActivateJobCommand(std::int32_t taskId) { return kScheduler + TaskSwitch(taskId) + " -activate:0"; }

std::string DeactivateJobCommand(std::int32_t taskId) { return kScheduler + TaskSwitch(taskId) + " -deactivate:0"; }

}  // namespace schedule
