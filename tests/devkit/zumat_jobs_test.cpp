#include <doctest/doctest.h>

#include "zumat/changes.h"
#include "zumat/clause_reader.h"
#include "zumat/clause_text.h"
#include "zumat/jobs_text.h"
#include "zumat/listing.h"
#include "zumat/next_start.h"

using namespace zumat;

namespace {

Minute At(const std::string& text) {  // DD/MM/YYYY HH:MM
  return *ReadDay(text.substr(0, 10)) + std::chrono::minutes(*ReadTimeOfDay(text.substr(11)));
}

// Friday
const Minute kNow = At("17/05/2024 10:30");

Outcome Run(const std::string& line, Jobs& jobs, Minute now = kNow, std::uint32_t random = 0) {
  Command command;
  Outcome outcome = ReadCommand(line, command);
  return outcome.Succeeded() ? Change(command, {now, random}, jobs) : outcome;
}

}  // namespace

TEST_CASE("zumat: commands that are refused, each with its code") {
  struct Row {
    std::string line;
    Result result;
  };
  const Row rows[] = {
      {"", kNoCommand},
      {"-TaskID:4 -YES", kNoCommand},
      {"-TaskID:4 -addjob:P:\"M -Every:Days:1", kBadQuotes},
      {"-TaskID:4 -addjob:P:\"M \"x\" y\" -Every:Days:1", kBadQuotes},
      {"-TaskID:4 -removejob", kUnknownSwitch},
      {"-TaskID:4 -addjob:P:\"M\" -Every:Days:1 stray", kUnknownSwitch},
      {"-TaskID:4 -addjob:P:M -Every:Days:1", kBadValue},
      {"-TaskID:4 -addjob::\"M\" -Every:Days:1", kBadValue},
      {"-TaskID:4 -editjob:1:P:\"M\" -Every:Days:1", kBadValue},
      {"-TaskID:4 -activate:1", kBadValue},
      {"-TaskID:4 -deactivate", kBadValue},
      {"-DeleteJob:4 -TaskID:4 -YES", kBadValue},
      {"-TaskID:0 -activate:0", kBadValue},
      {"-TaskID:2147483648 -activate:0", kBadValue},
      {"-TaskID:+4 -activate:0", kBadValue},
      {"-TaskID:\"4\" -activate:0", kBadValue},
      {"-TaskID:4 -TaskID:4 -activate:0", kRepeated},
      {"-TaskID:4 -activate:0 -deactivate:0", kClash},
      {"-TaskID:4 -activate:0 -YES", kClash},
      {"-list -TaskID:4", kClash},
      {"-DeleteJob -TaskID:4", kMissing},
      {"-DeleteJob -YES", kMissing},
      {"-editjob:0:P:\"M\" -Next:Boot:1", kMissing},
      {"-addjob:P:\"M\" -Every:Boot:1", kMissing},
      {"-TaskID:4 -addjob:P:\"M\"", kMissing},
  };
  for (const Row& row : rows) {
    CAPTURE(std::string(row.line));
    Command command;
    CHECK(ReadCommand(row.line, command).result == row.result);
  }
  Command command;
  const std::string longest(kMaximumCommandText, 'x');
  CHECK(ReadCommand("-addjob:P:\"" + longest + "\" -Next:Boot:1", command).Succeeded());
  CHECK(ReadCommand("-addjob:P:\"" + longest + "x\" -Next:Boot:1", command).result == kBadValue);
}

TEST_CASE("zumat: time clauses, as they are read, written and told") {
  struct Row {
    std::string text;
    Result result;
    const char* written = "";
    const char* told = "";
  };
  const Row rows[] = {
      {"-Every:Weeks:2 -StartTime:10:00 ", kSuccess, "-Every:Weeks:2 -StartTime:10:00", "every 2 weeks at 10:00"},
      {"-starttime:00:29 -EVERY:days:1 -StartTimeRnd:01:00", kSuccess,
       "-Every:Days:1 -StartTime:00:29 -StartTimeRnd:01:00", "every day at 00:29-01:00"},
      {"\t-EveryHoursMins:1:0 -Every:Su,M,T,W,Th,F,S -StartTime:00:04 -StartTimeRnd:01:03", kSuccess,
       "-EveryHoursMins:1:0 -Every:Su,M,T,W,Th,F,S -StartTime:00:04 -StartTimeRnd:01:03",
       "every 1 h 0 min every day, from 00:04-01:03"},
      {"-Every:th,S -EveryHoursMins:0:5", kSuccess, "-EveryHoursMins:0:5 -Every:Th,S -StartTime:00:00",
       "every 0 h 5 min on Th,S, from 00:00"},
      {"-EveryHoursMins:23:59", kSuccess, "-EveryHoursMins:23:59 -Every:Su,M,T,W,Th,F,S -StartTime:00:00",
       "every 23 h 59 min every day, from 00:00"},
      {"-Every:M -StartDay:03/06/2024", kSuccess, "-Every:M -StartDay:03/06/2024 -StartTime:00:00",
       "on M, from 03/06/2024 at 00:00"},
      {"-StartDay:29/02/2024 -StartTime:23:59", kSuccess, "-StartDay:29/02/2024 -StartTime:23:59",
       "once on 29/02/2024 at 23:59"},
      {"-Every:Boot:300 -EveryWindow:Days:7", kSuccess, "-Every:Boot:300 -EveryWindow:Days:7",
       "every boot + 300 s, at most once in 7 days"},
      {"-Next:Boot:0", kSuccess, "-Next:Boot:0", "next boot + 0 s"},
      {"-Every:Weeks:0", kBadValue},
      {"-Every:Days:1000001", kBadValue},
      {"-Every:Boot:-1", kBadValue},
      {"-Every:Tu", kBadValue},
      {"-Every:M,,F", kBadValue},
      {"-Every:", kBadValue},
      {"-Every", kBadValue},
      {"-EveryHoursMins:0:0", kBadValue},
      {"-EveryHoursMins:1", kBadValue},
      {"-EveryHoursMins:24:0", kBadValue},
      {"-Every:Days:1 -StartTime:24:00", kBadValue},
      {"-Every:Days:1 -StartTime:9:00", kBadValue},
      {"-Every:Days:1 -StartTime:10:00 -StartTimeRnd:09:59", kBadValue},
      {"-StartDay:29/02/2023 -StartTime:10:00", kBadValue},
      {"-StartDay:2024-05-17 -StartTime:10:00", kBadValue},
      {"-StartDay:Monday -StartTime:10:00", kBadValue},
      {"-Every:Days:1 -Every:Weeks:1", kRepeated},
      {"", kMissing},
      {"-StartTime:10:00", kMissing},
      {"-StartDay:17/05/2024", kMissing},
      {"-Every:Days:1 -StartTimeRnd:10:00", kMissing},
      {"-Every:Weeks:1 -EveryHoursMins:1:0", kClash},
      {"-Every:Days:1 -EveryWindow:Days:7", kClash},
      {"-Every:Boot:1 -StartTime:10:00", kClash},
      {"-Next:Boot:1 -Every:M", kClash},
  };
  for (const Row& row : rows) {
    CAPTURE(std::string(row.text));
    Clauses clauses, again;
    REQUIRE(ReadClauses(row.text, clauses).result == row.result);
    if (row.result != kSuccess) continue;
    CHECK(FormatClauses(clauses) == row.written);
    CHECK(DescribeClauses(clauses) == row.told);
    CHECK(ReadClauses(row.written, again).Succeeded());
    CHECK(again == clauses);
  }
}

TEST_CASE("zumat: the next start") {
  struct Row {
    std::string clauses;
    std::string now;   // the job is of Friday 17/05/2024 10:30
    std::string next;  // empty for none
  };
  const Row rows[] = {
      {"-Every:Weeks:2 -StartTime:10:31", "17/05/2024 10:30", "17/05/2024 10:31"},
      {"-Every:Weeks:2 -StartTime:10:30", "17/05/2024 10:30", "31/05/2024 10:30"},
      {"-Every:Weeks:2 -StartTime:10:30", "31/05/2024 10:29", "31/05/2024 10:30"},
      {"-Every:Weeks:2 -StartTime:10:30", "31/05/2024 10:30", "14/06/2024 10:30"},
      {"-Every:Days:3 -StartTime:00:29", "31/12/2024 23:00", "03/01/2025 00:29"},
      {"-Every:Days:3 -StartDay:01/06/2024", "17/05/2024 10:30", "01/06/2024 00:00"},
      {"-Every:Weeks:1000000", "17/05/2024 10:30", ""},
      {"-EveryHoursMins:1:30 -StartTime:00:04", "17/05/2024 00:03", "17/05/2024 00:04"},
      {"-EveryHoursMins:1:30 -StartTime:00:04", "17/05/2024 10:30", "17/05/2024 10:34"},
      {"-EveryHoursMins:1:30 -StartTime:00:04", "17/05/2024 22:34", "18/05/2024 00:04"},
      {"-EveryHoursMins:1:0 -Every:F -StartTime:00:15", "17/05/2024 23:15", "24/05/2024 00:15"},
      {"-EveryHoursMins:1:0 -Every:Su -StartTime:00:15", "18/05/2024 23:50", "19/05/2024 00:15"},
      {"-EveryHoursMins:1:0 -StartDay:20/05/2024", "17/05/2024 10:30", "20/05/2024 00:00"},
      {"-Every:M,F -StartTime:10:00", "17/05/2024 10:30", "20/05/2024 10:00"},
      {"-Every:F -StartTime:10:30", "17/05/2024 10:30", "24/05/2024 10:30"},
      {"-StartDay:18/05/2024 -StartTime:09:00", "17/05/2024 10:30", "18/05/2024 09:00"},
      {"-StartDay:17/05/2024 -StartTime:10:30", "17/05/2024 10:30", ""},
      {"-Every:Boot:60", "17/05/2024 10:30", ""},
  };
  for (const Row& row : rows) {
    CAPTURE(std::string(row.clauses));
    CAPTURE(row.now);
    Jobs jobs;
    REQUIRE(Run("-TaskID:1 -addjob:P:\"\" " + row.clauses, jobs).Succeeded());
    const auto next = NextStart(jobs[0], At(row.now));
    REQUIRE(next.has_value() == !row.next.empty());
    if (next) CHECK(*next == At(row.next));
  }
}

TEST_CASE("zumat: what the commands do to the jobs") {
  Jobs jobs;
  const std::string weekly = "P:\"M -A\" -Every:Weeks:2 -StartTime:10:00 -StartTimeRnd:10:09";
  CHECK(Run("-TaskID:9 -addjob:" + weekly, jobs, kNow, 27).message == "job 9 added");
  CHECK(Run("-TaskID:9 -deactivate:0", jobs).Succeeded());
  const Jobs before = jobs;
  CHECK(before[0].start == 10 * 60 + 7);
  const Minute later = At("20/05/2024 08:00");
  CHECK(Run("-TaskID:9 -addjob:" + weekly, jobs, later, 3).message == "job 9 redefined");
  CHECK(Run("-TaskID:9 -editjob:0:" + weekly, jobs, later, 3).message == "job 9 redefined");
  CHECK(jobs == before);  // first day, picked start and the deactivation are kept
  CHECK(Run("-TaskID:9 -editjob:0:Q:\"\" -StartDay:21/05/2024 -StartTime:11:00", jobs, later).Succeeded());
  CHECK((jobs[0].program == "Q" && jobs[0].command.empty() && jobs[0].since == ReadDay("20/05/2024")));
  CHECK(Run("-TaskID:2 -editjob:0:P:\"M\" -Every:Boot:5", jobs).message == "job 2 added");

  CHECK(Run("-addjob:P:\"N\" -Next:Boot:5", jobs).message == "job 1000001 added");
  CHECK(Run("-addjob:P:\"O\" -Next:Boot:5", jobs).message == "job 1000002 added");
  CHECK(Run("-addjob:P:\"O\" -Next:Boot:6", jobs).message == "job 1000002 redefined");
  CHECK(Run("-DeleteJob -TaskID:1000001 -YES", jobs).message == "job 1000001 deleted");
  CHECK(Run("-addjob:P:\"Q\" -Next:Boot:6", jobs).message == "job 1000001 added");

  CHECK(Run("-TaskID:5 -activate:0", jobs).result == kNoSuchJob);
  CHECK(Run("-TaskID:5 -deactivate:0", jobs).Succeeded());
  CHECK(Run("-DeleteJob -TaskID:5 -YES", jobs).Succeeded());
  CHECK(Run("-TaskID:9 -activate:0", jobs).Succeeded());
  CHECK((jobs.size() == 4 && jobs[1].id == 9 && jobs[1].active));

  for (int id = 10; jobs.size() < kMaximumJobs; ++id)
    REQUIRE(Run("-TaskID:" + std::to_string(id) + " -addjob:" + weekly, jobs).Succeeded());
  CHECK(Run("-TaskID:1 -addjob:" + weekly, jobs).result == kTooManyJobs);
  CHECK(Run("-TaskID:9 -addjob:" + weekly, jobs).Succeeded());
}

TEST_CASE("zumat: the jobs file reads as it was written, and damage is seen") {
  Jobs jobs, read;
  REQUIRE(Run("-TaskID:4 -addjob:P:\"C:\\x\\ \t\xC3\xB1\" -Every:Days:1 -StartTime:10:00 -StartTimeRnd:10:09", jobs)
              .Succeeded());
  REQUIRE(Run("-TaskID:7 -addjob:P:\"\" -Every:Boot:5 -EveryWindow:Days:7", jobs).Succeeded());
  const std::string good = FormatJobs(jobs);
  REQUIRE(ReadJobs(good, read).Succeeded());
  CHECK(read == jobs);
  struct Row {
    std::string good;
    std::string bad;
  };
  const Row rows[] = {
      {"\"version\": 1", "\"version\": 2"},
      {"\"id\": 4", "\"id\": 7"},
      {"\"id\": 4", "\"id\": 0"},
      {"\"id\": 4", "\"id\": 4294967300"},
      {"\"id\": 4", "\"id\": \"4\""},
      {"\"10:00\"", "\"10:10\""},
      {"\"P\"", "\"P:\""},
      {"\"P\"", "null"},
      {"\"active\": true", "\"active\": 1"},
      {"17/05/2024", "17/13/2024"},
      {"-Every:Days:1", "-Every:Days"},
      {"\"program\"", "\"programs\""},
      {"\"jobs\": [", "\"jobs\": [3, "},
      {"\"since\"", "\"x\": 1, \"since\""},
      {"}\n", ""},
      {"\xC3\xB1", "\xC3"},
      {"\\t", "\\\""},
      {"\\t", "\\u0000"},
      {"\"version\": 1", "\"version\": 1.0"},
      {"\"version\": 1", "\"version\": 1, \"x\": 1"},
      {"\"id\": 4", "\"id\": 4, \"id\": 4"},
  };
  for (const Row& row : rows) {
    CAPTURE(std::string(row.good));
    CAPTURE(std::string(row.bad));
    std::string text = good;
    text.replace(text.find(row.good), row.good.size(), row.bad);
    CHECK(ReadJobs(text, read).result == kDamaged);
  }
  for (const std::string& text :
       {std::string(), std::string("[]"), good.substr(0, good.size() / 2), good + std::string(kMaximumJobsText, ' '),
        std::string(100000, '['), good + '\0', "\xEF\xBB\xBF" + good})
    CHECK(ReadJobs(text, read).result == kDamaged);
  CHECK(read == jobs);
}

TEST_CASE("zumat: listings") {
  Jobs jobs;
  CHECK(RenderTable(jobs, kNow) == "There are no jobs.\n");
  REQUIRE(Run("-TaskID:4 -addjob:P:\"a\t\xC3\xB1\" -Every:Days:1 -StartTime:11:00", jobs).Succeeded());
  REQUIRE(Run("-TaskID:12 -addjob:PROG:\"" + std::string(61, 'x') + "\" -Every:Boot:5", jobs).Succeeded());
  REQUIRE(Run("-TaskID:13 -addjob:P:\"\" -Every:M", jobs).Succeeded());
  REQUIRE(Run("-TaskID:13 -deactivate:0", jobs).Succeeded());
  REQUIRE(Run("-TaskID:14 -addjob:P:\"\" -StartDay:16/05/2024 -StartTime:10:00", jobs).Succeeded());
  const std::string pad(50, ' '), x(57, 'x');
  CHECK(RenderTable(jobs, kNow) ==
        "Task ID  Program  Command     " + pad + "Recurrence                   Active  Next start\n" +
            "4        P        a\\x09\xC3\xB1      " + pad + "every day at 11:00           yes     17/05/2024 11:00\n" +
            "12       PROG     " + x + "...  every boot + 5 s             yes     boot + 5 s\n" +
            "13       P                    " + pad + "on M at 00:00                no      -\n" +
            "14       P                    " + pad + "once on 16/05/2024 at 10:00  yes     none\n");
  jobs.resize(1);
  CHECK(RenderJson(jobs, kNow) == R"({
  "version": 1,
  "now": "2024-05-17T10:30",
  "jobs": [
    {
      "id": 4,
      "program": "P",
      "command": "a\tñ",
      "clauses": "-Every:Days:1 -StartTime:11:00",
      "recurrence": "every day at 11:00",
      "active": true,
      "nextStart": "2024-05-17T11:00",
      "secondsAfterBoot": null
    }
  ]
}
)");
}
