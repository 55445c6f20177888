#include <doctest/doctest.h>

#include <climits>
#include <string>

#include "schedule/jobs.h"

using namespace schedule;

namespace {

int g_number = 32767;
int Number() { return g_number; }
std::string Every(int period, bool random) { return MkEveryClause(period, random, Number); }

}  // namespace

TEST_CASE("clauses: recurrence, window and spread") {
  const std::pair<std::string, const char*> rows[] = {
      {Every(10080, true), "-Every:Weeks:1"},
      {Every(8 * 1440 + 61, false), "-Every:Weeks:1"},
      {Every(INT_MAX, false), "-Every:Weeks:213044"},
      {Every(10079, false), "-Every:Days:6"},
      {Every(1500, true), "-Every:Days:1"},
      {Every(1439, false), "-EveryHoursMins:23:59 -Every:Su,M,T,W,Th,F,S"},
      {Every(90, true), "-EveryHoursMins:1:30 -Every:W"},
      {MkStartTimeRange(0, 60), "-StartTime:00:29 -StartTimeRnd:01:00"},
      {MkStartTimeRange(29, 2000), "-StartTime:00:29 -StartTimeRnd:23:59"},
      {MkStartTimeRange(INT_MAX, INT_MAX), "-StartTime:23:59 -StartTimeRnd:23:59"},
      {MkStartTimeRange(100, 50) + MkStartTimeRange(-1, 50) + MkStartTimeRange(-2, -1), ""},
      {MkStartTimeSpread(60, 15), "-StartTime:00:00 -StartTimeRnd:00:59"},
      {MkStartTimeSpread(5, 2), "-StartTime:00:02 -StartTimeRnd:00:29"},
      {MkStartTimeSpread(INT_MAX, INT_MAX), "-StartTime:00:07 -StartTimeRnd:23:59"},
      {MkBootClause(0, true), " -Every:Boot:0 -EveryWindow:Days:7"},
  };
  for (const auto& [clause, expected] : rows) CHECK(clause == expected);
  g_number = 0;
  for (const std::string weekday : {"M", "T", "W", "Th", "F", "M"}) {
    CHECK(Every(60, true) == "-EveryHoursMins:1:0 -Every:" + weekday);
    ++g_number;
  }
}

TEST_CASE("tasks: a unit, a rounding or a condition that schedules at another time, or not at all") {
  const AgentTask seconds{"", "", "", 1, kPeriodic, 's', 30, 119, TaskCondition::kAlways, false};
  const AgentTask hours{"", "", "", 1, kBoot, 'h', 1, 2, TaskCondition::kNotIntegrated, false};
  const AgentTask reversed{"", "", "", 1, kBoot, 'm', 2, 1, TaskCondition::kIntegrated, false};
  CHECK((PeriodMinutes(seconds) == 1 && PeriodMinutes(hours) == 120));
  CHECK((DelaySeconds(hours, 0.0) == 3600 && DelaySeconds(hours, 1.0) == 7200));
  CHECK(DelaySeconds(seconds, 0.5) == 75);  // 44.5 + 0.5
  CHECK((DelaySeconds(reversed, 1.0) == 120 && IsScheduled(seconds, true) && IsScheduled(seconds, false)));
  CHECK((IsScheduled(hours, false) && !IsScheduled(hours, true)));
  CHECK((IsScheduled(reversed, true) && !IsScheduled(reversed, false)));
}
