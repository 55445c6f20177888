#include <doctest/doctest.h>

#include <tuple>

#include "zumat/jobs_text.h"
#include "zumat/schedule.h"

using namespace zumat;

namespace {

Second At(const std::string& text) {  // DD/MM/YYYY HH:MM
  return *ReadDay(text.substr(0, 10)) + std::chrono::minutes(*ReadTimeOfDay(text.substr(11)));
}

// Friday
const Second kNow = At("17/05/2024 10:30");

Outcome Run(const std::string& line, Jobs& jobs, Second now = kNow, std::uint32_t random = 0) {
  Command command;
  Outcome outcome = ReadCommand(line, command);
  return outcome.Succeeded() ? Change(command, {now, random}, jobs) : outcome;
}

Job JobOf(const std::string& clauses, Second given = kNow) {
  Jobs jobs;
  CHECK(Run("-TaskID:1 -addjob:P:\"\" " + clauses, jobs, given).message == "job 1 added");
  return jobs.at(0);
}

}  // namespace

TEST_CASE("zumat: commands and clauses that are refused, each with its code") {
  const std::string job = "-TaskID:4 -addjob:P:\"M\" ", longest(kMaximumCommandText, 'x');
  const std::tuple<Result, std::vector<std::string>> rows[] = {
      {kNoCommand, {"", "-TaskID:4 -YES"}},
      {kBadQuotes, {"-TaskID:4 -addjob:P:\"M -Every:Days:1", "-TaskID:4 -addjob:P:\"M \"x\" y\" -Every:Days:1"}},
      {kUnknownSwitch, {"-TaskID:4 -removejob", job + "-Every:Days:1 stray"}},
      {kBadValue,
       {"-TaskID:4 -addjob:P:M -Every:Days:1",
        "-TaskID:4 -addjob::\"M\" -Every:Days:1",
        "-TaskID:4 -editjob:1:P:\"M\" -Every:Days:1",
        "-TaskID:4 -activate:1",
        "-TaskID:4 -deactivate",
        "-DeleteJob:4 -TaskID:4 -YES",
        "-TaskID:0 -activate:0",
        "-TaskID:2147483648 -activate:0",
        "-TaskID:+4 -activate:0",
        "-TaskID:\"4\" -activate:0",
        "-run -until:-1",
        "-run -now:17/05/2024",
        "-addjob:P:\"" + longest + "x\" -Next:Boot:1",
        job + "-Every:Weeks:0",
        job + "-Every:Days:1000001",
        job + "-Every:Boot:-1",
        job + "-Every:Tu",
        job + "-Every:M,,F",
        job + "-Every:",
        job + "-Every",
        job + "-EveryHoursMins:0:0",
        job + "-EveryHoursMins:1",
        job + "-EveryHoursMins:24:0",
        job + "-Every:Days:1 -StartTime:24:00",
        job + "-Every:Days:1 -StartTime:9:00",
        job + "-Every:Days:1 -StartTime:10:00 -StartTimeRnd:09:59",
        job + "-StartDay:29/02/2023 -StartTime:10:00",
        job + "-StartDay:Monday -StartTime:10:00"}},
      {kRepeated, {"-TaskID:4 -TaskID:4 -activate:0", job + "-Every:Days:1 -Every:Weeks:1"}},
      {kClash,
       {"-TaskID:4 -activate:0 -deactivate:0", "-TaskID:4 -activate:0 -YES", "-list -TaskID:4", "-stop -until:1",
        job + "-Every:Weeks:1 -EveryHoursMins:1:0", job + "-Every:Days:1 -EveryWindow:Days:7",
        job + "-Every:Boot:1 -StartTime:10:00", job + "-Next:Boot:1 -Every:M"}},
      {kMissing,
       {"-DeleteJob -TaskID:4", "-DeleteJob -YES", "-editjob:0:P:\"M\" -Next:Boot:1", "-addjob:P:\"M\" -Every:Boot:1",
        job, job + "-StartTime:10:00", job + "-StartDay:17/05/2024", job + "-Every:Days:1 -StartTimeRnd:10:00"}},
      {kSuccess, {"-addjob:P:\"" + longest + "\" -Next:Boot:1", "-run -now:17/05/2024-10:30 -UNTIL:5", "-stop"}}};
  for (const auto& [result, lines] : rows) {
    for (const std::string& line : lines) {
      Command command;
      CHECK_MESSAGE(ReadCommand(line, command).result == result, line);
    }
  }
}

TEST_CASE("zumat: time clauses, as they are read, written and described") {
  const std::string_view rows[][3] = {
      {"-Every:Weeks:2 -StartTime:10:00 ", "-Every:Weeks:2 -StartTime:10:00", "every 2 weeks at 10:00"},
      {"-starttime:00:29 -EVERY:days:1 -StartTimeRnd:01:00", "-Every:Days:1 -StartTime:00:29 -StartTimeRnd:01:00",
       "every day at 00:29-01:00"},
      {"-Every:th,S -EveryHoursMins:0:5", "-EveryHoursMins:0:5 -Every:Th,S -StartTime:00:00",
       "every 0 h 5 min on Th,S, from 00:00"},
      {"\t-EveryHoursMins:23:59", "-EveryHoursMins:23:59 -Every:Su,M,T,W,Th,F,S -StartTime:00:00",
       "every 23 h 59 min every day, from 00:00"},
      {"-Every:M -StartDay:03/06/2024", "-Every:M -StartDay:03/06/2024 -StartTime:00:00",
       "on M, from 03/06/2024 at 00:00"},
      {"-StartTime:23:59 -StartDay:29/02/2024", "-StartDay:29/02/2024 -StartTime:23:59", "once on 29/02/2024 at 23:59"},
      {"-Every:Boot:300 -EveryWindow:Days:7", "-Every:Boot:300 -EveryWindow:Days:7",
       "every boot + 300 s, at most once in 7 days"},
      {"-Next:Boot:0", "-Next:Boot:0", "next boot + 0 s"}};
  for (const auto& [text, written, described] : rows) {
    Clauses clauses, again;
    CHECK_MESSAGE(ReadClauses(text, clauses).Succeeded(), text);
    CHECK(FormatClauses(clauses) == written);
    CHECK(DescribeClauses(clauses) == described);
    CHECK((ReadClauses(written, again).Succeeded() && again == clauses));
  }
}

TEST_CASE("zumat: the next start") {
  const std::string rows[][3] = {
      // the job is of Friday 17/05/2024 10:30; no next start: empty
      {"-Every:Weeks:2 -StartTime:10:30", "17/05/2024 10:29", "17/05/2024 10:30"},
      {"-Every:Weeks:2 -StartTime:10:30", "31/05/2024 10:30", "14/06/2024 10:30"},
      {"-Every:Days:3 -StartTime:00:29", "31/12/2024 23:00", "03/01/2025 00:29"},
      {"-Every:Days:3 -StartDay:01/06/2024", "17/05/2024 10:30", "01/06/2024 00:00"},
      {"-Every:Weeks:1000000", "17/05/2024 10:30", ""},
      {"-EveryHoursMins:1:30 -StartTime:00:04", "17/05/2024 10:30", "17/05/2024 10:34"},
      {"-EveryHoursMins:1:30 -StartTime:00:04", "17/05/2024 22:34", "18/05/2024 00:04"},
      {"-EveryHoursMins:1:0 -Every:F -StartTime:00:15", "17/05/2024 23:15", "24/05/2024 00:15"},
      {"-EveryHoursMins:1:0 -StartDay:20/05/2024", "17/05/2024 10:30", "20/05/2024 00:00"},
      {"-Every:M,F -StartTime:10:00", "17/05/2024 10:30", "20/05/2024 10:00"},
      {"-StartDay:18/05/2024 -StartTime:09:00", "17/05/2024 10:30", "18/05/2024 09:00"},
      {"-StartDay:17/05/2024 -StartTime:10:30", "17/05/2024 10:30", ""},
      {"-Every:Boot:60", "17/05/2024 10:30", ""}};
  for (const auto& [clauses, now, next] : rows) {
    CAPTURE(clauses);
    const auto found = NextStart(JobOf(clauses), std::chrono::floor<std::chrono::minutes>(At(now)));
    REQUIRE(found.has_value() == !next.empty());
    if (found) CHECK(*found == At(next));
  }
}

TEST_CASE("zumat: a job starts at its time, once for all that was missed, and never while it runs") {
  constexpr Step kWait = Step::kWait, kStart = Step::kStart, kSkip = Step::kSkip;
  const Second boot = At("17/05/2024 11:00");
  const struct {
    std::string clauses;  // given on Friday 17/05/2024 10:30
    std::string now;
    Step step;
    bool isRunning = false;
    std::string handled = "", lastStart = "";
  } rows[] = {{"-Every:Days:1 -StartTime:10:31", "17/05/2024 10:30", kWait},
              {"-Every:Days:1 -StartTime:10:31", "17/05/2024 10:31", kStart},
              {"-Every:Days:1 -StartTime:10:31", "17/05/2024 10:31", kSkip, true},
              {"-Every:Days:1 -StartTime:10:30", "17/05/2024 12:00", kWait},
              {"-Every:Days:1 -StartTime:10:31", "27/05/2024 09:00", kStart},
              {"-Every:Days:1 -StartTime:10:31", "27/05/2024 09:00", kWait, false, "27/05/2024 08:59"},
              {"-StartDay:18/05/2024 -StartTime:09:00", "20/05/2024 10:00", kStart},
              {"-StartDay:18/05/2024 -StartTime:09:00", "20/05/2024 10:00", kWait, false, "18/05/2024 09:00"},
              // the clock is set back by an hour, and by a day
              {"-EveryHoursMins:0:5", "17/05/2024 09:35", kWait, false, "17/05/2024 10:35"},
              {"-EveryHoursMins:0:5", "18/05/2024 09:35", kWait, false, "19/05/2024 09:35"},
              {"-EveryHoursMins:0:5 -StartTime:00:01", "18/05/2024 09:36", kWait, false, "19/05/2024 09:36"},
              {"-Every:Boot:300", "17/05/2024 11:04", kWait},
              {"-Every:Boot:300", "17/05/2024 11:05", kStart},
              {"-Every:Boot:300", "17/05/2024 11:30", kWait, false, "17/05/2024 11:05"},
              {"-Every:Boot:300 -EveryWindow:Days:7", "17/05/2024 11:05", kSkip, false, "", "10/05/2024 11:06"},
              {"-Every:Boot:300 -EveryWindow:Days:7", "17/05/2024 11:05", kStart, false, "", "10/05/2024 11:05"},
              {"-Next:Boot:60", "17/05/2024 11:01", kStart},
              {"-Next:Boot:60", "17/05/2024 11:00", kWait}};
  for (const auto& row : rows) {
    CAPTURE(row.clauses);
    CAPTURE(row.now);
    Jobs jobs{JobOf(row.clauses)};
    ArmForBoot(jobs);
    if (!row.handled.empty()) jobs[0].handled = At(row.handled);
    if (!row.lastStart.empty()) jobs[0].lastStart = At(row.lastStart);
    CHECK(StepOf(jobs[0], row.isRunning, boot, At(row.now)) == row.step);
    jobs[0].active = false;
    CHECK(StepOf(jobs[0], row.isRunning, boot, At(row.now)) == kWait);
  }
  // Of the next boot: not of the present one; and again when it could not be started, but not when it was.
  Jobs next{JobOf("-Next:Boot:0")};
  CHECK(StepOf(next[0], false, boot, boot) == kWait);
  ArmForBoot(next);
  CHECK(Run("-TaskID:1 -editjob:0:P:\"\" -Next:Boot:0", next).Succeeded());
  CHECK(!next[0].armed);
  next[0].lastStart = boot;
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
  CHECK(Run("-TaskID:9 -addjob:" + weekly, jobs, kNow, 27).message == "job 9 added");
  CHECK(Run("-TaskID:9 -deactivate:0", jobs).Succeeded());
  const Jobs before = jobs;
  CHECK(before[0].start == 10 * 60 + 7);
  const Second later = At("20/05/2024 08:00");
  CHECK(Run("-TaskID:9 -addjob:" + weekly, jobs, later, 3).message == "job 9 redefined");
  CHECK(jobs == before);  // first day, picked start and the deactivation are kept
  CHECK(Run("-TaskID:9 -editjob:0:Q:\"\" -StartDay:21/05/2024 -StartTime:11:00", jobs, later).Succeeded());
  CHECK((jobs[0].program == "Q" && jobs[0].since == ReadDay("20/05/2024") && jobs[0].handled == later));
  CHECK(Run("-TaskID:2 -editjob:0:P:\"M\" -Every:Boot:5", jobs).message == "job 2 added");

  for (const auto& [job, id] : {std::pair("N\" -Next:Boot:5", "1"), {"O\" -Next:Boot:5", "2"}})
    CHECK(Run(std::string("-addjob:P:\"") + job, jobs).message == std::string("job 100000") + id + " added");
  CHECK(Run("-addjob:P:\"O\" -Next:Boot:6", jobs).message == "job 1000002 redefined");
  CHECK(Run("-DeleteJob -TaskID:1000001 -YES", jobs).message == "job 1000001 deleted");
  ArmForBoot(jobs);
  CHECK(Run("-addjob:P:\"O\" -Next:Boot:6", jobs).message == "job 1000001 added");  // of the boot after this one

  CHECK(Run("-TaskID:5 -activate:0", jobs).result == kNoSuchJob);
  CHECK((Run("-TaskID:5 -deactivate:0", jobs).Succeeded() && Run("-DeleteJob -TaskID:5 -YES", jobs).Succeeded()));
  CHECK(Run("-TaskID:9 -activate:0", jobs, At("30/05/2024 08:00")).Succeeded());
  CHECK((jobs.size() == 4 && jobs[1].active && jobs[1].handled == At("30/05/2024 08:00")));  // nothing to catch up

  for (int id = 10; jobs.size() < kMaximumJobs; ++id)
    REQUIRE(Run("-TaskID:" + std::to_string(id) + " -addjob:" + weekly, jobs).Succeeded());
  CHECK(Run("-TaskID:1 -addjob:" + weekly, jobs).result == kTooManyJobs);
}

TEST_CASE("zumat: the jobs file reads as it was written, and damage is seen") {
  Jobs jobs, read;
  REQUIRE(Run("-TaskID:4 -addjob:P:\"C:\\x\\ \t\xC3\xB1\" -Every:Days:1 -StartTime:10:00 -StartTimeRnd:10:09", jobs)
              .Succeeded());
  REQUIRE(Run("-TaskID:7 -addjob:P:\"\" -Every:Boot:5 -EveryWindow:Days:7", jobs).Succeeded());
  jobs[0].armed = true;
  jobs[0].lastStart = kNow;
  jobs[0].exitCode = 0xC0000005;
  jobs[1].error = "no";
  jobs[1].process = 8;
  jobs[1].created = ~std::uint64_t{0};
  const std::string good = FormatJobs(jobs);
  REQUIRE(ReadJobs(good, read).Succeeded());
  CHECK(read == jobs);
  const std::pair<std::string, std::string> rows[] = {{"\"version\": 1", "\"version\": 2"},
                                                      {"\"version\": 1", "\"version\": 1.0"},
                                                      {"\"id\": 4", "\"id\": 7"},
                                                      {"\"id\": 4", "\"id\": 0"},
                                                      {"\"id\": 4", "\"id\": 4294967300"},
                                                      {"\"id\": 4", "\"id\": \"4\""},
                                                      {"\"id\": 4", "\"id\": 4, \"id\": 4"},
                                                      {"\"10:00\"", "\"10:10\""},
                                                      {"\"P\"", "\"P:\""},
                                                      {"\"P\"", "null"},
                                                      {"\"active\": true", "\"active\": 1"},
                                                      {"17/05/2024", "17/13/2024"},
                                                      {"T10:30:00", "T10:30:60"},
                                                      {"3221225477", "4294967296"},
                                                      {"-Every:Days:1", "-Every:Days"},
                                                      {"\"program\"", "\"programs\""},
                                                      {"\"jobs\": [", "\"jobs\": [3, "},
                                                      {"\"since\"", "\"x\": 1, \"since\""},
                                                      {"}\n", ""},
                                                      {"\xC3\xB1", "\xC3"},
                                                      {"\\t", "\\u0000"},
                                                      {"\"process\": 8", "\"process\": -8"}};
  for (const auto& [from, to] : rows) {
    std::string text = good;
    text.replace(text.find(from), from.size(), to);
    CHECK_MESSAGE(ReadJobs(text, read).result == kDamaged, to);
  }
  for (const std::string& text :
       {std::string(), std::string("[]"), good.substr(0, good.size() / 2), good + std::string(kMaximumJobsText, ' '),
        std::string(100000, '['), good + '\0', "\xEF\xBB\xBF" + good})
    CHECK(ReadJobs(text, read).result == kDamaged);
  CHECK(read == jobs);
}

TEST_CASE("zumat: listings") {
  Jobs jobs{JobOf("-Every:Days:1 -StartTime:11:00"), JobOf("-Every:Boot:5"), JobOf("-Every:M"),
            JobOf("-StartDay:16/05/2024 -StartTime:10:00")};
  jobs[0].command = "a\t\xC3\xB1";
  jobs[1].command = std::string(61, 'x');
  jobs[1].process = 8;
  jobs[1].lastStart = kNow;
  jobs[2].active = false;
  jobs[2].error = "no program";
  jobs[3].exitCode = 3;
  const std::string pad(50, ' '), x(57, 'x'), text = RenderTable(jobs, kNow);
  CHECK(text == "Task ID  Program  Command     " + pad +
                    "Recurrence                   Active  Next start        Last start        Result\n"
                    "1        P        a?\xC3\xB1         " +
                    pad + "every day at 11:00           yes     17/05/2024 11:00  -                 -\n" +
                    "1        P        " + x +
                    "...  every boot + 5 s             yes     boot + 5 s        17/05/2024 10:30  running\n" +
                    "1        P                    " + pad +
                    "on M at 00:00                no      -                 -                 no program\n" +
                    "1        P                    " + pad +
                    "once on 16/05/2024 at 10:00  yes     none              -                 3\n");
  CHECK(RenderJson({jobs[0]}, kNow).find("\"nextStart\": \"2024-05-17T11:00\",\n      \"secondsAfterBoot\": null") !=
        std::string::npos);
  CHECK(RenderTable({}, kNow) == "There are no jobs.\n");
}
