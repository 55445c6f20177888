#include "schedule/commands.h"

#include <doctest/doctest.h>

#include <climits>
#include <string>

#include "schedule/jobs.h"

namespace {

int g_number = 0;
int Number() { return g_number; }

}  // namespace

TEST_CASE("clauses: recurrence, window and spread") {
  using schedule::MkEveryClause, schedule::MkStartTimeRange, schedule::MkStartTimeSpread;
  struct Row {
    std::string clause, expected;
  };
  const auto every = [](int period, bool random) { return MkEveryClause(period, random, Number); };
  g_number = 32767;
  const Row rows[] = {
      {every(10080, true), "-Every:Weeks:1"},
      {every(8 * 1440 + 61, false), "-Every:Weeks:1"},
      {every(INT_MAX, false), "-Every:Weeks:213044"},
      {every(10079, false), "-Every:Days:6"},
      {every(1500, true), "-Every:Days:1"},
      {every(60, false), "-EveryHoursMins:1:0 -Every:Su,M,T,W,Th,F,S"},
      {every(1439, false), "-EveryHoursMins:23:59 -Every:Su,M,T,W,Th,F,S"},
      {every(90, true), "-EveryHoursMins:1:30 -Every:W"},
      {MkStartTimeRange(0, 60), "-StartTime:00:29 -StartTimeRnd:01:00"},
      {MkStartTimeRange(29, 1439), "-StartTime:00:29 -StartTimeRnd:23:59"},
      {MkStartTimeRange(600, 2000), "-StartTime:10:00 -StartTimeRnd:23:59"},
      {MkStartTimeRange(INT_MAX, INT_MAX), "-StartTime:23:59 -StartTimeRnd:23:59"},
      {MkStartTimeRange(100, 50), ""},
      {MkStartTimeRange(-1, 50), ""},
      {MkStartTimeRange(-2, -1), ""},
      {MkStartTimeSpread(60, 15), "-StartTime:00:00 -StartTimeRnd:00:59"},
      {MkStartTimeSpread(5, 2), "-StartTime:00:02 -StartTimeRnd:00:29"},
      {MkStartTimeSpread(30, 14), "-StartTime:00:14 -StartTimeRnd:00:43"},
      {MkStartTimeSpread(INT_MAX, INT_MAX), "-StartTime:00:07 -StartTimeRnd:23:59"},
      {schedule::MkBootClause(300, false), " -Every:Boot:300"},
      {schedule::MkBootClause(0, true), " -Every:Boot:0 -EveryWindow:Days:7"},
  };
  for (const Row& row : rows) CHECK(row.clause == row.expected);
  const char* const weekdays[] = {"M", "T", "W", "Th", "F", "M"};
  for (g_number = 0; g_number <= 5; ++g_number) {
    CHECK(every(60, true) == std::string("-EveryHoursMins:1:0 -Every:") + weekdays[g_number]);
  }
}

TEST_CASE("commands: every template, with and without arguments, texts as they stand") {
  using namespace schedule;
  const Job whole{"KEPLPMNG", "KELX", "-A \"b\"", 7}, bare{"P", nullptr, "", -1};
  CHECK(AddJobCommand(whole, " -c") == "zumat -TaskID:7 -addjob:KEPLPMNG:\"KELX -A \"b\"\" -c");
  CHECK(EditJobCommand(whole, "") == "zumat -TaskID:7 -editjob:0:KEPLPMNG:\"KELX -A \"b\"\"");
  CHECK(AddJobCommand(bare, " ") == "zumat -TaskID:-1 -addjob:P:\"\" ");
  CHECK(EditJobCommand({nullptr, "M", nullptr, 2}, "") == "zumat -TaskID:2 -editjob:0::\"M\"");
  CHECK(FixedDayClauses("", "10:00") == " -StartDay: -StartTime:10:00");
  CHECK(NextBootCommand("KELUPG -X", 90) == "zumat -addjob:KEPLPMNG:\"KELUPG -X\" -Next:Boot:90");
  CHECK(DeleteJobCommand(5) == "zumat -DeleteJob -TaskID:5 -YES");
  CHECK(ActivateJobCommand(8) == "zumat -TaskID:8 -activate:0");
  CHECK(DeactivateJobCommand(8) == "zumat -TaskID:8 -deactivate:0");
  CHECK(NextBootCommand(std::string(9000, 'x'), 1).size() == 9000 + 38);
}

TEST_CASE("tasks: units, rounding and conditions") {
  using namespace schedule;
  const AgentTask seconds{"", "", "", 1, kPeriodic, 's', 30, 119, TaskCondition::kAlways, false};
  const AgentTask hours{"", "", "", 1, kBoot, 'h', 1, 2, TaskCondition::kNotIntegrated, false};
  const AgentTask reversed{"", "", "", 1, kBoot, 'm', 2, 1, TaskCondition::kIntegrated, false};
  CHECK(PeriodMinutes(seconds) == 1);
  CHECK(PeriodMinutes(hours) == 120);
  CHECK(DelaySeconds(hours, 0.0) == 3600);
  CHECK(DelaySeconds(hours, 1.0) == 7200);
  CHECK(DelaySeconds(seconds, 0.5) == 75);  // 44.5 + 0.5
  CHECK(DelaySeconds(reversed, 1.0) == 120);
  CHECK((IsScheduled(seconds, true) && IsScheduled(seconds, false)));
  CHECK((IsScheduled(hours, false) && !IsScheduled(hours, true)));
  CHECK((IsScheduled(reversed, true) && !IsScheduled(reversed, false)));
}
