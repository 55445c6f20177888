#include <doctest/doctest.h>

#include <cstdlib>
#include <new>
#include <string>
#include <tuple>
#include <utility>

#include "KELUtils.h"
#include "schedule/jobs.h"
#include "support/inner_module.h"
#include "support/recorded_program.h"
#include "trace/trace.h"

using schedule::CallZumAT;
using support::AgentTree;
using support::HeldTime;
using support::RecordedProgram;

namespace {

constexpr char kScheduler[] = "Scheduler/zumat.exe";

// What adding and then editing a job writes.
std::string Twice(const std::string& taskId, const std::string& rest) {
  return "-TaskID:" + taskId + " -addjob:" + rest + "\n-TaskID:" + taskId + " -editjob:0:" + rest + "\n";
}

void Integrate(const AgentTree&) {
  const KE_TIME time{};
  REQUIRE(KE_SetDeviceID("device") == KE_SUCCESS);
  REQUIRE(KE_Integrate(&time) == KE_SUCCESS);
}

int g_failingAllocation = 0;  // which allocation from now on fails, once; 0 for none

}  // namespace

// Kept out of line: GCC takes a freed block of an inlined one for a mistake.
[[gnu::noinline]] void* operator new(std::size_t size) {
  const bool fails = g_failingAllocation > 0 && --g_failingAllocation == 0;
  if (void* const memory = fails ? nullptr : std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

TEST_CASE("scheduler: its second place is not found, an exit code ignored, or a command line changed") {
  const AgentTree tree;
  const trace::TraceScope scope;
  CHECK((CallZumAT("") == KE_MISSING_ARGUMENT && CallZumAT("zumat") == KE_BAD_SCHEDULER_COMMAND));
  CHECK((CallZumAT("zumat\t-x") == KE_BAD_SCHEDULER_COMMAND && CallZumAT("zumat -x") == KE_SCHEDULER_NOT_STARTED));
  const RecordedProgram second(tree, "KELUtils/zumat.exe");
  CHECK((CallZumAT("zumat -x  y ") == KE_SUCCESS && second.Lines() == "-x  y \n"));
  std::filesystem::create_directories(tree.Path("Scheduler"));
  support::WriteFile(tree.Path(kScheduler), "no program");
  CHECK((CallZumAT("zumat -x") == KE_SUCCESS && second.Lines() == "-x\n"));
  std::filesystem::remove(tree.Path(kScheduler));

  const RecordedProgram first(tree, kScheduler);
  CHECK((CallZumAT("zumat\t-x y") == KE_SUCCESS && HeldTime::waited == 90000));
  CHECK(first.Lines().find("zumat\"\t-x y\n") != std::string::npos);
  const std::string start = "\"" + tree.Path("KELUtils").string() + "\\..\\Scheduler\\zumat\" ";
  CHECK(CallZumAT("zumat " + std::string(9000, 'x')) == KE_SUCCESS);
  CHECK(first.Lines() == std::string(8198 - start.size(), 'x') + "\n");
  for (const int exitCode : {1, 3, 259, -1}) {
    first.EndWith(exitCode);
    CHECK(CallZumAT("zumat -x") == KE_SCHEDULER_FAILED);
  }
  HeldTime::inTime = false;
  CHECK((CallZumAT("zumat -x") == KE_SCHEDULER_TIMEOUT && second.Lines().empty()));
}

TEST_CASE("jobs: an export writes another command, or one for arguments that it has to refuse") {
  const AgentTree tree;
  const RecordedProgram scheduler(tree, kScheduler);
  HeldTime::random = 8;  // Thursday
  const auto check = [&](KE_RESULT result, KE_RESULT expected, const std::string& lines) {
    CHECK((result == expected && scheduler.Lines() == lines));
  };
  check(KE_SetTask("P", "M", "-a", 3, "1/1", "10:00"), 0,
        "-TaskID:3 -addjob:P:\"M -a\" -StartDay:1/1 -StartTime:10:00\n");
  check(KE_SetTask(nullptr, "M", nullptr, 3, "", ""), 0, "-TaskID:3 -addjob::\"M\" -StartDay: -StartTime:\n");
  check(KE_SetTask("P", "", "-a", 0, nullptr, nullptr), KE_MISSING_ARGUMENT, "");
  for (const auto& [taskId, day, time] :
       {std::tuple<int32_t, const char*, const char*>{3, nullptr, "10:00"}, {3, "1/1", nullptr}, {0, "1/1", "10:00"}})
    check(KE_SetTask("P", "M", "-a", taskId, day, time), KE_OUT_OF_RANGE, "");

  const std::string spread = " -EveryHoursMins:1:0 -Every:Th -StartTime:00:04 -StartTimeRnd:01:03";
  check(KE_SetPeriodicTask("P", "kelupd", "-a", 4, 60, 1), 0,
        Twice("4", "P:\"kelupd -a\"" + spread) + "-TaskID:8 -activate:0\n");
  check(KE_SetPeriodicTask("P", "", "-a", 4, 60, 1), KE_MISSING_ARGUMENT, Twice("4", "P:\" -a\"" + spread));
  check(KE_SetPeriodicTask("P", "M", "", 4, 0, 1), KE_OUT_OF_RANGE, "");
  check(KE_SetPeriodicTask("P", "M", "", 0, 1, 1), KE_OUT_OF_RANGE, "");

  check(KE_SetPeriodicTaskEx("KELSNET", "", 4, 1440, 0, 60, 0), 0,
        Twice("4", "KEPLPMNG:\"KELSNET\" -Every:Days:1 -StartTime:00:29 -StartTimeRnd:01:00") +
            "-TaskID:14 -deactivate:0\n");
  check(KE_SetPeriodicTaskRangeDate("M", "-a", 4, 1, 600, 700, "-Every:M"), 0,
        Twice("4", "KEPLPMNG:\"M -a\" -Every:M -StartTime:10:00 -StartTimeRnd:11:40"));
  check(KE_SetPeriodicTaskRangeDate("M", "-a", 4, 1, 0, 700, nullptr), 0, Twice("4", "KEPLPMNG:\"M -a\" "));
  const std::tuple<const char*, int32_t, int32_t, int32_t, int32_t> refused[] = {{"", 0, 0, -1, -1},
                                                                                 {"KELSNET", 1, 0, 1, 1},
                                                                                 {"KELSNET", 1, 1, -1, 1},
                                                                                 {"KELSNET", 1, 1, 2, 1},
                                                                                 {"KELSNET", 0, 1, 1, 1}};
  for (const auto& [module, taskId, period, start, end] : refused) {
    const KE_RESULT expected = *module ? KE_OUT_OF_RANGE : KE_MISSING_ARGUMENT;
    check(KE_SetPeriodicTaskEx(module, "", taskId, period, start, end, 0), expected, "");
    check(KE_SetPeriodicTaskRangeDate(module, "", taskId, period, start, end, ""), expected, "");
  }

  uint32_t word = 7;
  check(KE_ScheduleTaskReboot("", 1, &word), KE_OUT_OF_RANGE, "");
  check(KE_ScheduleTaskReboot("c", -1, &word), KE_OUT_OF_RANGE, "");
  check(KE_ScheduleTaskReboot("c", 1, nullptr), KE_OUT_OF_RANGE, "");
  CHECK(word == 7);
  check(KE_ScheduleTaskReboot("KELUPG -X", 0, &word), 0, "-addjob:KEPLPMNG:\"KELUPG -X\" -Next:Boot:0\n");
  CHECK(word == 0);
  check(KE_RemoveScheduleTaskReboot(1), 0, "");
  check(schedule::KE_DeleteSheduledTask(0), KE_MISSING_ARGUMENT, "");

  scheduler.EndWith(3);
  check(KE_SetPeriodicTask("P", "M", "-a", 4, 60, 1), KE_SCHEDULER_FAILED, Twice("4", "P:\"M -a\"" + spread));
  check(KE_ScheduleTaskReboot("c", 1, &word), KE_SCHEDULER_NOT_STARTED, "-addjob:KEPLPMNG:\"c\" -Next:Boot:1\n");
  check(schedule::KE_ActivateRebootTasks("KELUPD"), 0, "-TaskID:8 -activate:0\n");
  check(schedule::KE_DeactivateRebootTasks("KELUPD"), KE_SCHEDULER_FAILED, "-TaskID:8 -deactivate:0\n");
  check(schedule::KE_DeactivateRebootTasks(""), KE_MISSING_ARGUMENT, "");
}

TEST_CASE("default tasks: a job is missing, another one, or in another order") {
  const AgentTree tree;
  const RecordedProgram scheduler(tree, kScheduler), helper(tree, "KepWInst/KepWInst.exe");
  const std::string all = " -Every:Su,M,T,W,Th,F,S -StartTime:";
  const auto expected = [&](bool integrated, int delay) {
    return Twice("8", "KEPLPMNG:\"KELUPD\" -Every:Boot:" + std::to_string(delay)) +
           Twice("13", "KEPWINST:\" -FORCE\" -Every:Boot:90") +
           Twice("14", "KEPLPMNG:\"KELSNET -CONTINUE\" -Every:Boot:300") +
           (integrated ? Twice("2", "KEPLPMNG:\"KELTEST\" -EveryHoursMins:1:0" + all + "00:02 -StartTimeRnd:01:01")
                       : Twice("2", "KEPLPMNG:\"KELTEST\" -EveryHoursMins:0:5" + all + "00:02 -StartTimeRnd:00:29")) +
           Twice("4",
                 "KEPLPMNG:\"KELQTINE -A:GETINFO\" -EveryHoursMins:1:0 -Every:M -StartTime:00:04 -StartTimeRnd:01:03") +
           Twice("12", "KEPLPMNG:\"KELREPORT -R\" -EveryHoursMins:1:0" + all + "00:12 -StartTimeRnd:01:11") +
           Twice("7", "KEPLPMNG:\"KELCONF\" -EveryHoursMins:1:0" + all + "00:07 -StartTimeRnd:01:06") +
           Twice("9", "KEPLPMNG:\"KELUPD\" -EveryHoursMins:1:0" + all + "00:09 -StartTimeRnd:01:08") +
           "-TaskID:8 -activate:0\n" +
           Twice("11", "KEPLPMNG:\"KELUPG -CONTINUE\" -EveryHoursMins:1:0" + all + "00:11 -StartTimeRnd:01:10") +
           Twice("15", "KEPLPMNG:\"KELREPORT -M\" -EveryHoursMins:1:0" + all + "00:00 -StartTimeRnd:00:59") +
           (integrated ? Twice("16", "KEPLPMNG:\"KELNTF\" -EveryHoursMins:0:15" + all + "00:01 -StartTimeRnd:00:29")
                       : "");
  };
  HeldTime::random = 0;
  CHECK((KE_ScheduleDefaultTasks() == KE_SUCCESS && scheduler.Lines() == expected(false, 300)));
  CHECK(helper.LateLines() == "-FORCE\n");
  Integrate(tree);
  HeldTime::random = 32765;  // a Monday, and all but the longest delay
  scheduler.EndWith(5);
  CHECK((KE_ScheduleDefaultTasks() == KE_SCHEDULER_FAILED && scheduler.Lines() == expected(true, 3600)));
  CHECK(helper.LateLines() == "-FORCE\n");
  helper.Remove();
  CHECK(KE_ScheduleDefaultTasks() == KE_INSTALL_HELPER_NOT_STARTED);
}

TEST_CASE("default tasks: a failed allocation costs more than one job") {
  const AgentTree tree;
  const support::LoadedDll log(tree.Path("Common/TvLogSys.dll"));  // stays loaded, which saves most of the time
  HeldTime::random = 0;
  bool reached = true;
  const auto commands = [&](int failing) {  // there is no scheduler: they are only traced
    g_failingAllocation = failing;
    KE_ScheduleDefaultTasks();
    reached = std::exchange(g_failingAllocation, 0) == 0;
    const std::string lines = tree.Log();
    std::filesystem::remove(tree.Path("KELUtils/KELUtils.log"));
    CHECK(lines.find(";LaunchKEPWinst;\"Function start\"") != std::string::npos);
    int count = 0;
    for (size_t at = 0; (at = lines.find(";CallZumAT;\"Function start\"", at)) != std::string::npos; ++at) ++count;
    return count;
  };
  CHECK(commands(0) == 21);
  int at = 1;
  while (reached) {
    CAPTURE(at);
    CHECK(commands(at) >= 19);
    at += 7;  // a job makes many more
  }
  CHECK(at > 100);
}

TEST_CASE("random numbers: one out of its range, or a weekday that is rare") {
  int weekdays[5] = {};
  for (int i = 0; i < 10000; ++i) {
    const int number = win::g_randomNumber();
    REQUIRE((number >= 0 && number <= 32767));
    ++weekdays[number % 5];
  }
  for (const int days : weekdays) CHECK((days > 1800 && days < 2200));
}

TEST_CASE("upgrade: a step is left out or counts too much, or a bad store becomes the start copy") {
  const AgentTree tree;
  const RecordedProgram scheduler(tree, kScheduler), manager(tree, "KesLpmng/KEPLPMNG.exe");
  const std::string whole = "[INTEGRATION]\r\nCERTIFICATE=c\r\n[AGENT]\r\n[INSTALL]\r\n[AGENTRCM]\r\n";
  support::WriteFile(tree.Store("INTEGRA.DAT"), whole);
  HeldTime::random = 0;
  scheduler.EndWith(4);
  CHECK(KE_UpgradeComplete(3010, "2.0") == KE_SUCCESS);
  std::string lines = scheduler.Lines();
  CHECK(lines.find("-TaskID:8 ") < lines.find("-TaskID:2 "));
  CHECK(lines.find("-DeleteJob -TaskID:5 -YES\n-TaskID:15 -addjob") != std::string::npos);
  CHECK(lines.find("-TaskID:4 -addjob", lines.find("-TaskID:15 ")) < lines.find("-DeleteJob"));
  for (const char* failure : {"Reprogramming ZUMat task error, not possible edit KELUpdTask [TaskId:8]",
                              "Deleting ZUMat task error, not possible delete KELReportTask -S [TaskId:5]"})
    CHECK(tree.Traced("KE_UpgradeComplete;\"" + std::string(failure) + " - Error Code: 1787\""));
  CHECK(HeldTime::waited == 90000);
  CHECK(manager.LateLines(2) == "KELTest -FORCE \nKELUpg -FORCE -CONTINUE -UPGCOMPLETE:3010 -VERSION:2.0\n");
  char version[16] = {};
  CHECK((KE_GetAgentVersion(version, sizeof version) == KE_SUCCESS && std::string(version) == "2.0"));
  CHECK(support::ReadFile(tree.Store("INTEGRA.START")) == support::ReadFile(tree.Store("INTEGRA.DAT")));

  scheduler.Remove();  // which is slow
  Integrate(tree);
  CHECK(KE_UpgradeComplete(1603, "3.0") == KE_SUCCESS);
  CHECK(manager.LateLines() == "KELUpg -FORCE -CONTINUE -UPGCOMPLETE:1603 -VERSION:3.0\n");
  CHECK((KE_GetAgentVersion(version, sizeof version) == KE_SUCCESS && std::string(version) == "2.0"));
  CHECK(KE_UpgradeComplete(0, "") == KE_MISSING_ARGUMENT);
  CHECK(KE_ScheduleUpgradeComplete(-1, std::string(1100, 'v').c_str()) == KE_SUCCESS);
  CHECK(manager.LateLines().size() == 1023 + 1);
  manager.Remove();
  CHECK(KE_UpgradeComplete(0, "3.0") == KE_PROGRAM_NOT_STARTED);

  // Only a store of at least four sections that can be read becomes the start copy: any other one would undo every
  // later change. Three are the normal state without remote control and uninstall password.
  const std::string moved = whole + "[MOVED]\r\n",
                    three = "[AGENT]\r\nID=3\r\n[INSTALL]\r\n[INTEGRATION]\r\nCERTIFICATE=c\r\n";
  for (const auto& [live, start, kept] :
       {std::tuple{three, std::string(), std::string()}, {three, whole, whole}, {moved, whole, moved}}) {
    support::WriteFile(tree.Store("INTEGRA.DAT"), live);
    support::WriteFile(tree.Store("INTEGRA.START"), start);
    if (start.empty()) std::filesystem::remove(tree.Store("INTEGRA.START"));
    const support::LockedFile readByOthers(tree.Store("INTEGRA.DAT"), FILE_SHARE_READ);
    KE_UpgradeComplete(1603, "3.0");
    CHECK(support::ReadFile(tree.Store("INTEGRA.START")) == kept);
  }
  support::WriteFile(tree.Store("INTEGRA.DAT"), whole);
  const support::LockedFile inUse(tree.Store("INTEGRA.START"));
  KE_UpgradeComplete(1603, "3.0");
  CHECK(tree.Traced("KE_UpgradeComplete;\"Error copying from Integra.start\""));
}
