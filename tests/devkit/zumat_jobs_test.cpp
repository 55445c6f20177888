#include <doctest/doctest.h>

#include <regex>
#include <tuple>

#include "zumat/jobs_text.h"
#include "zumat/schedule.h"

using namespace zumat;

namespace {

Second At(const std::string& text) {  // DD/MM/YYYY HH:MM
  return *ReadDay(text.substr(0, 10)) + std::chrono::minutes(*ReadTimeOfDay(text.substr(11)));
}

const Second kNow = At("17/05/2024 10:30");  // Friday

Outcome Run(const std::string& line, Jobs& jobs, Second now = kNow, std::uint32_t random = 0) {
  Command command;
  Outcome outcome = ReadCommand(line, command);
  return outcome.Succeeded() ? Change(command, {now, random}, jobs) : outcome;
}

// The lines of a text after the first one, each cut at "|", without the blanks around the cells.
std::vector<std::vector<std::string>> Table(const std::string& text) {
  static const std::regex cell(" *([^|\n]*?) *([|\n])");
  std::vector<std::vector<std::string>> table(1);
  for (std::sregex_iterator at(text.begin(), text.end(), cell); at != std::sregex_iterator(); ++at) {
    table.back().push_back((*at)[1]);
    if ((*at)[2] == "\n") table.emplace_back();
  }
  return {table.begin() + 1, table.end() - 1};
}

Job JobOf(const std::string& clauses) {
  Jobs jobs;
  CHECK(Run("-TaskID:1 -addjob:P:\"\" " + clauses, jobs).message == "job 1 added");
  return jobs.at(0);
}

}  // namespace

TEST_CASE("zumat: commands and clauses that are refused, each with its code") {
  Command command;
  for (const auto& line : Table(R"(
1 | | -TaskID:4 -YES
2 | -TaskID:4 -addjob:P:"M -Every:Days:1 | -TaskID:4 -addjob:P:"M "x" y" -Every:Days:1
3 | -TaskID:4 -removejob | @-Every:Days:1 stray
4 | -TaskID:4 -addjob:P:M -Every:Days:1 | -TaskID:4 -addjob::"M" -Every:Days:1 | -TaskID:4 -editjob:1:P:"M" -Every:M
4 | -TaskID:4 -activate:1 | -TaskID:4 -deactivate | -DeleteJob:4 -TaskID:4 -YES | -TaskID:0 -activate:0 | @-Every:Tu
4 | -TaskID:2147483648 -activate:0 | -TaskID:+4 -activate:0 | -TaskID:"4" -activate:0 | -run -until:-1 | @-Every:
4 | @-Every:Weeks:0 | @-Every:Days:1000001 | @-Every:Boot:-1 | @-Every:M,,F | -run -now:17/05/2024 | @-Every
4 | @-EveryHoursMins:0:0 | @-EveryHoursMins:1 | @-EveryHoursMins:24:0 | @-Every:M -StartTime:24:00
4 | @-Every:M -StartTime:9:00 | @-Every:M -StartTime:10:00 -StartTimeRnd:09:59 | @-StartDay:M -StartTime:10:00
4 | @-StartDay:29/02/2023 -StartTime:10:00
5 | -TaskID:4 -TaskID:4 -activate:0 | @-Every:Days:1 -Every:Weeks:1
6 | -DeleteJob -TaskID:4 | -DeleteJob -YES | -editjob:0:P:"M" -Next:Boot:1 | -addjob:P:"M" -Every:Boot:1 | @
6 | @-StartTime:10:00 | @-StartDay:17/05/2024 | @-Every:Days:1 -StartTimeRnd:10:00
7 | -TaskID:4 -activate:0 -deactivate:0 | -TaskID:4 -activate:0 -YES | -list -TaskID:4 | -stop -until:1
7 | @-Every:Weeks:1 -EveryHoursMins:1:0 | @-Every:Days:1 -EveryWindow:Days:7 | @-Every:Boot:1 -StartTime:10:00
7 | @-Next:Boot:1 -Every:M
0 | -run -now:17/05/2024-10:30 -UNTIL:5 | -stop | @-Every:Days:1
)")) {
    for (std::size_t i = 1; i < line.size(); ++i) {
      const bool isJob = line[i].starts_with('@');
      const std::string text = isJob ? "-TaskID:4 -addjob:P:\"M\" " + line[i].substr(1) : line[i];
      CHECK_MESSAGE(ReadCommand(text, command).result == static_cast<unsigned>(line[0][0] - '0'), text);
    }
  }
  const std::string longest(kMaximumCommandText, 'x');
  CHECK(ReadCommand("-addjob:P:\"" + longest + "\" -Next:Boot:1", command).Succeeded());
  CHECK(ReadCommand("-addjob:P:\"x" + longest + "\" -Next:Boot:1", command).result == kBadValue);
}

TEST_CASE("zumat: time clauses as they are read, written and described, and their next start") {
  // Clauses, as they are written, described; now, next start. The job is of Friday 17/05/2024 10:30.
  for (auto& row : Table(R"(
-Every:Weeks:2 -StartTime:10:30 ||every 2 weeks at 10:30| 17/05/2024 10:29 | 17/05/2024 10:30
-StartTime:10:30 -EVERY:days:1 |-Every:Days:1 -StartTime:10:30|every day at 10:30| 31/05/2024 10:30 | 01/06/2024 10:30
-Every:Days:3 -StartTime:00:29 -StartTimeRnd:00:30 ||every 3 days at 00:29-00:30| 31/12/2024 23:00 | 03/01/2025 00:29
-Every:Weeks:1000000 -StartTime:00:00 ||every 1000000 weeks at 00:00| 17/05/2024 10:30 |
-EveryHoursMins:1:0 -Every:F -StartTime:00:15 ||every 1 h 0 min on F, from 00:15| 17/05/2024 23:15 | 24/05/2024 00:15
-Every:th,SU|-Every:Su,Th -StartTime:00:00|on Su,Th at 00:00 | 17/05/2024 10:30 | 19/05/2024 00:00
-EveryHoursMins:1:30 -Every:W -StartTime:00:00 ||every 1 h 30 min on W, from 00:00|22/05/2024 10:31|22/05/2024 12:00
-Every:M,F -StartTime:10:00 ||on M,F at 10:00| 17/05/2024 10:30 | 20/05/2024 10:00
-StartDay:18/05/2024 -StartTime:09:00 ||once on 18/05/2024 at 09:00| 17/05/2024 10:30 | 18/05/2024 09:00
-StartDay:17/05/2024 -StartTime:10:30 ||once on 17/05/2024 at 10:30| 17/05/2024 10:30 |
-Every:Boot:300 -EveryWindow:Days:7 ||every boot + 300 s, at most once in 7 days| 17/05/2024 10:30 |
)")) {
    CAPTURE(row[0]);
    const Job job = JobOf(row[0]);
    Clauses again;
    const std::string written = FormatClauses(job.clauses);
    CHECK((written == row[row[1].empty() ? 0 : 1] && DescribeClauses(job.clauses) == row[2]));
    CHECK((ReadClauses(written, again).Succeeded() && again == job.clauses));
    const auto found = NextStart(job, std::chrono::floor<std::chrono::minutes>(At(row[3])));
    CHECK((row[4].empty() ? !found : found && *found == At(row[4])));
  }
}

TEST_CASE("zumat: a job starts at its time, once for all that was missed, and never while it runs") {
  const Second boot = At("17/05/2024 11:00");
  // Clauses given on Friday 17/05/2024 10:30, now, step, handled or empty, last start, whether it runs.
  for (const auto& row : Table(R"(
-Every:Days:1 -StartTime:10:31          | 17/05/2024 10:30 | wait
-Every:Days:1 -StartTime:10:31          | 17/05/2024 10:31 | start
-Every:Days:1 -StartTime:10:31          | 17/05/2024 10:31 | skip  |                  | 17/05/2024 10:30 | runs
-Every:Days:1 -StartTime:10:30          | 17/05/2024 12:00 | wait
-Every:Days:1 -StartTime:10:31          | 27/05/2024 09:00 | start
-Every:Days:1 -StartTime:10:31          | 27/05/2024 09:00 | wait  | 27/05/2024 08:59
-StartDay:18/05/2024 -StartTime:09:00   | 20/05/2024 10:00 | start
-StartDay:18/05/2024 -StartTime:09:00   | 20/05/2024 10:00 | wait  | 18/05/2024 09:00
-EveryHoursMins:0:5                     | 17/05/2024 09:35 | wait  | 17/05/2024 10:35
-EveryHoursMins:0:5                     | 18/05/2024 09:40 | start | 19/05/2024 09:36
-Every:Boot:300                         | 17/05/2024 11:04 | wait
-Every:Boot:300                         | 17/05/2024 11:05 | start
-Every:Boot:300                         | 17/05/2024 11:30 | wait  | 17/05/2024 11:05
-Every:Boot:300 -EveryWindow:Days:7     | 17/05/2024 11:05 | skip  |                  | 10/05/2024 11:06
-Every:Boot:300 -EveryWindow:Days:7     | 17/05/2024 11:05 | start |                  | 10/05/2024 11:05
-Next:Boot:60                           | 17/05/2024 11:01 | start
-Next:Boot:60                           | 17/05/2024 11:00 | wait
)")) {
    CAPTURE(row[0] + row[1]);
    Jobs jobs{JobOf(row[0])};
    ArmForBoot(jobs);
    if (row.size() > 3 && !row[3].empty()) jobs[0].handled = At(row[3]);
    if (row.size() > 4) jobs[0].lastStart = At(row[4]);
    const Step step = StepOf(jobs[0], row.size() > 5, boot, At(row[1]));
    CHECK(row[2] == (step == Step::kWait ? "wait" : step == Step::kStart ? "start" : "skip"));
    jobs[0].active = false;
    CHECK(StepOf(jobs[0], false, boot, At(row[1])) == Step::kWait);
  }
  // Of the next boot: not of the present one; and again when it could not be started, but not when it was.
  Jobs next{JobOf("-Next:Boot:0")};
  CHECK(StepOf(next[0], false, boot, boot) == Step::kWait);
  ArmForBoot(next);
  CHECK((Run("-TaskID:1 -editjob:0:P:\"\" -Next:Boot:0", next).Succeeded() && !next[0].armed));
  std::tie(next[0].lastStart, next[0].process) = std::tuple(boot, 8);
  Jobs again = next;
  CHECK((Run("-TaskID:1 -editjob:0:P:\"\" -Next:Boot:0", again).Succeeded() && !again[0].lastStart));
  ArmForBoot(next);
  CHECK(!next.at(0).armed);
  next[0].process = 0;
  ArmForBoot(next);
  CHECK(next.empty());
}

TEST_CASE("zumat: the program of a job is the one that tokens.tok names by a full path") {
  const std::string tokens =
      "A=e\"C:\\x y\\A.exe\"\r\nb=e\"relative.exe\"\r\nC=e\"\r\nD=\"C:\\D.exe\"\r\nE=e\"C:\\E.exe\"";
  CHECK((FindProgram(tokens, "a") == "C:\\x y\\A.exe" && FindProgram(tokens, "E") == "C:\\E.exe"));
  for (const char* missing : {"B", "C", "D", "F", ""}) CHECK(FindProgram(tokens, missing).empty());
}

TEST_CASE("zumat: what the commands do to the jobs") {
  Jobs jobs;
  const std::string weekly = "P:\"M -A\" -Every:Weeks:2 -StartTime:10:00 -StartTimeRnd:10:09";
  CHECK((Run("-TaskID:9 -addjob:" + weekly, jobs, kNow, 27).Succeeded() && jobs[0].start == 10 * 60 + 7));
  CHECK(Run("-TaskID:9 -deactivate:0", jobs).Succeeded());
  const Jobs before = jobs;
  const Second later = At("20/05/2024 08:00");
  CHECK(Run("-TaskID:9 -addjob:" + weekly, jobs, later, 3).message == "job 9 redefined");
  CHECK(jobs == before);  // first day, picked start and the deactivation are kept
  CHECK(Run("-TaskID:9 -editjob:0:Q:\"\" -StartDay:21/05/2024 -StartTime:11:00", jobs, later).Succeeded());
  CHECK((jobs[0].program == "Q" && jobs[0].since == ReadDay("20/05/2024") && jobs[0].handled == later));
  for (const auto& row : Table(R"(
-TaskID:2 -editjob:0:P:"M" -Every:Boot:5 |job 2 added
-addjob:P:"N" -Next:Boot:5               |job 1000001 added
-addjob:P:"O" -Next:Boot:5               |job 1000002 added
-addjob:P:"O" -Next:Boot:6               |job 1000002 redefined
-DeleteJob -TaskID:1000001 -YES          |job 1000001 deleted
-DeleteJob -TaskID:5 -YES                |there is no job 5: nothing to delete
-TaskID:5 -deactivate:0                  |there is no job 5: nothing to deactivate
-TaskID:5 -activate:0                    |there is no job 5
)"))
    CHECK(Run(row[0], jobs).message == row[1]);
  ArmForBoot(jobs);
  CHECK(Run("-addjob:P:\"O\" -Next:Boot:6", jobs).message == "job 1000001 added");  // of the boot after this one
  std::tie(jobs[3].armed, jobs[3].lastStart) = std::tuple(false, kNow);
  CHECK(Run("-addjob:P:\"O\" -Next:Boot:7", jobs).message == "job 1000001 redefined");  // the other was started
  CHECK(Run("-TaskID:9 -activate:0", jobs, At("30/05/2024 08:00")).Succeeded());
  CHECK((jobs.size() == 4 && jobs[1].active && jobs[1].handled == At("30/05/2024 08:00")));  // nothing to catch up
  jobs.resize(kMaximumJobs, jobs.back());
  CHECK(Run("-TaskID:1 -addjob:" + weekly, jobs).result == kTooManyJobs);
}

TEST_CASE("zumat: the jobs file reads as it was written, and damage is seen") {
  Jobs jobs, read;
  REQUIRE(Run("-TaskID:4 -addjob:P:\"C:\\x\\ \t\xC3\xB1\" -Every:Days:1 -StartTime:10:00 -StartTimeRnd:10:09", jobs)
              .Succeeded());
  REQUIRE(Run("-TaskID:7 -addjob:P:\"\" -Every:Boot:5 -EveryWindow:Days:7", jobs).Succeeded());
  std::tie(jobs[0].armed, jobs[0].lastStart, jobs[0].exitCode) = std::tuple(true, kNow, 0xC0000005);
  std::tie(jobs[1].error, jobs[1].process, jobs[1].created) = std::tuple("no", 8, ~std::uint64_t{0});
  const std::string good = FormatJobs(jobs);
  REQUIRE((ReadJobs(good, read).Succeeded() && read == jobs));
  for (const auto& row : Table(R"(
"version": 1  | "version": 2   | "version": 1 | "version": 1.0      | "id": 4    | "id": 7 | "id": 4  | "id": 0
"id": 4       | "id": 4294967300 | "id": 4    | "id": "4"           | "id": 4    | "id": 4, "id": 4
"10:00" | "10:10" | "P" | "P:" | "P" | null | "active": true | "active": 1
17/05/2024    | 17/13/2024     | T10:30:00    | T10:30:60           | 3221225477 | 4294967296
-Every:Days:1 | -Every:Days    | "program"    | "programs"          | "jobs": [  | "jobs": [3,
"since"       | "x": 1, "since" | \t          | \u0000              | "process": 8 | "process": -8
)")) {
    for (std::size_t i = 0; i < row.size(); i += 2) {
      std::string text = good;
      text.replace(text.find(row[i]), row[i].size(), row[i + 1]);
      CHECK_MESSAGE(ReadJobs(text, read).result == kDamaged, row[i + 1]);
    }
  }
  for (const std::string& text :
       {std::string(), std::string("[]"), good.substr(0, good.size() / 2), good + std::string(kMaximumJobsText, ' '),
        good.substr(0, good.size() - 2), good.substr(0, good.find("\xB1")) + "\"" + good.substr(good.find("\xB1") + 2),
        std::string(100000, '['), good + '\0', "\xEF\xBB\xBF" + good})
    CHECK(ReadJobs(text, read).result == kDamaged);
  CHECK(read == jobs);
}

TEST_CASE("zumat: listings show what is next and what came of the last start") {
  Jobs jobs{JobOf("-Every:Days:1 -StartTime:11:00"), JobOf("-Every:Boot:5"), JobOf("-Every:M")};
  jobs[0].command = "a\t\xC3\xB1" + std::string(60, 'x');
  std::tie(jobs[0].exitCode, jobs[1].process, jobs[1].lastStart) = std::tuple(3, 8, kNow);
  std::tie(jobs[2].active, jobs[2].error) = std::tuple(false, "no program");
  const std::string shown = RenderTable(jobs, kNow) + RenderJson(jobs, kNow), cut = std::string(54, 'x') + "...";
  for (const auto& row :
       Table("\na?\xC3\xB1" + cut + R"(  every day at 11:00  yes     17/05/2024 11:00  -                 3
every boot + 5 s    yes     boot + 5 s        17/05/2024 10:30  running
on M at 00:00       no      -                 -                 no program
"exitCode": 3|"nextStart": "2024-05-17T11:00"|"lastStart": "2024-05-17T10:30:00"
)"))
    for (const std::string& text : row) CHECK_MESSAGE(shown.find(text) != std::string::npos, text << shown);
}
