#include <doctest/doctest.h>

#include <fstream>
#include <vector>

#include "support/product_tree.h"
#include "win/process.h"
#include "zumat/jobs_text.h"

namespace {

// The program, called as the library calls it: through another folder, detached, without standard handles.
struct Scheduler : support::Folder {
  Scheduler() {
    std::filesystem::create_directory(Path("KELUtils"));
    AddDevkit("zumat.exe", "Scheduler");
    AddDevkit("KEPLPMNG.exe", "Programs");
  }
  std::string Line(const std::string& arguments) const {
    return "\"" + *this / "KELUtils" + "\\..\\Scheduler\\zumat\" " + arguments;
  }
  win::Process Start(const std::string& arguments, DWORD flags = CREATE_NEW_PROCESS_GROUP | DETACHED_PROCESS) const {
    return win::StartProcess(Line(arguments), {.creationFlags = flags, .startupFlags = STARTF_FORCEOFFFEEDBACK});
  }
  static DWORD End(const win::Process& process) {
    CHECK(process.Wait(60000) == WAIT_OBJECT_0);
    return process.ExitCode().value();
  }
  DWORD Run(const std::string& arguments) const { return End(Start(arguments)); }
  std::string Text() const { return support::ReadFile(file); }
  zumat::Jobs Jobs() const {
    zumat::Jobs jobs;
    CHECK(zumat::ReadJobs(Text(), jobs).message == "");
    return jobs;
  }
  std::string Log() const { return support::ReadFile(Path("Scheduler/zumat.log")); }
  template <typename Condition>
  static void Await(Condition condition) {
    for (int i = 0; i < 3000 && !condition(); ++i) Sleep(10);
    CHECK(condition());
  }
  void AwaitLine(const char* text) const {
    Await([&] { return Log().find(text) != std::string::npos; });
  }
  auto FilesOfJobs() const { return std::distance(std::filesystem::directory_iterator(file.parent_path()), {}); }
  // How often the stand-in was started with a command.
  int Starts(const std::string& command) const {
    const std::string log = support::ReadFile(Path("Programs/KEPLPMNG.log"));
    int count = 0;
    for (std::size_t at = 0; (at = log.find(" " + command + "\r\n", at)) != std::string::npos; ++at) ++count;
    return count;
  }
  // Writes tokens.tok, with the stand-in under two names, and the settings of the stand-in.
  void Prepare(const std::string& settings, const std::string& name = "OTHER") const {
    std::filesystem::create_directory(file.parent_path());
    const std::string program = "=e\"" + Path("Programs/KEPLPMNG.exe").make_preferred().string() + "\"\r\n";
    support::WriteFile(file.parent_path() / "tokens.tok", "KEPLPMNG" + program + name + program);
    support::WriteFile(Path("Programs/KEPLPMNG.ini"), "[EXIT]\r\n" + settings);
  }
  std::filesystem::path file = Path("Scheduler/Config/jobs.json");
};

const std::string kDaily = "-Every:Days:1 -StartTime:00:29 -StartTimeRnd:01:00";

}  // namespace

TEST_CASE("zumat.exe: a command without console in the system's code page is kept, logged and listed") {
  const Scheduler scheduler;
  const std::string longText = "x\xF1" + std::string(8000, 'x');
  CHECK(scheduler.Run("-TaskID:12 -editjob:0:KEPLPMNG:\"" + longText + "\" " + kDaily) == 0);
  const zumat::Job job = scheduler.Jobs().at(0);
  CHECK((job.command == "x\xC3\xB1" + longText.substr(2) && job.start >= 29 && job.start <= 60));
  CHECK(scheduler.Log().ends_with("xxx...\r\n"));
  const auto list = support::RunProgram(scheduler.Line("-list"));
  CHECK((list.exitCode == 0 && list.output.find("\n12       KEPLPMNG  x\xC3\xB1xx") != std::string::npos));
}

TEST_CASE("zumat.exe: processes lock the jobs, and none of their changes is lost") {
  const Scheduler scheduler;
  std::vector<win::Process> processes;
  for (int id = 1; id <= 10; ++id)
    processes.push_back(scheduler.Start("-TaskID:" + std::to_string(id) + " -addjob:KEPLPMNG:\"\" " + kDaily));
  for (const win::Process& process : processes) CHECK(Scheduler::End(process) == 0);
  CHECK((scheduler.Jobs().size() == 10 && scheduler.FilesOfJobs() == 1));  // no leftovers
}

TEST_CASE("zumat.exe: a refused command and a damaged file are reported in one line, and the file stays") {
  const Scheduler scheduler;
  CHECK(scheduler.Run("-TaskID:1 -addjob:KEPLPMNG:\"M -Every:Days:1") == zumat::kBadQuotes);
  CHECK_FALSE(std::filesystem::exists(scheduler.file.parent_path()));
  REQUIRE(scheduler.Run("-TaskID:1 -addjob:KEPLPMNG:\"\" " + kDaily) == 0);
  const std::string good = scheduler.Text(), damaged = good.substr(0, good.size() / 2),
                    add = "-TaskID:2 -addjob:KEPLPMNG:\"\" " + kDaily;
  const std::tuple<std::string, std::string, zumat::Result> rows[] = {
      {good, "", zumat::kNoCommand},
      {good, "-TaskID:1 -editjob:0:KEPLPMNG:\"\" -Every:Days:2\r\n-x", zumat::kBadValue},
      {damaged, add, zumat::kDamaged},
      {damaged, "-list", zumat::kDamaged},
      {damaged, "-run", zumat::kDamaged},
      {"", add, zumat::kDamaged}};
  for (const auto& [jobs, arguments, result] : rows) {
    CAPTURE(arguments);
    support::WriteFile(scheduler.file, jobs);
    const auto run = support::RunProgram(scheduler.Line(arguments));
    const std::size_t line = arguments == "-run" ? run.output.find('\n') + 1 : 0;  // after that of the start
    CHECK((run.output.find("zumat: ") == line && run.output.find('\n', line) == run.output.size() - 1));
    CHECK((run.exitCode == result && scheduler.Text() == jobs));
  }
  std::filesystem::remove_all(scheduler.file.parent_path());
  support::WriteFile(scheduler.file.parent_path(), "not a folder");
  CHECK(scheduler.Run(add) == zumat::kFileFailure);
}

TEST_CASE("zumat.exe -run: starts once what was missed, and notes the end, or why there was no start") {
  const Scheduler scheduler;
  scheduler.Prepare("Code=7");
  for (const char* job :
       {"-TaskID:1 -addjob:keplpmng:\"KELTEST -X\" -EveryHoursMins:0:30",
        "-TaskID:2 -addjob:NOPE:\"LATE\" -EveryHoursMins:0:1", "-addjob:KEPLPMNG:\"KELUPG\" -Next:Boot:0",
        "-TaskID:3 -addjob:KEPLPMNG:\"BOOT\" -Every:Boot:0"})
    REQUIRE(scheduler.Run(job) == 0);
  CHECK(scheduler.Run("-run -until:2 -now:01/06/2050-10:31") == 0);
  zumat::Jobs jobs = scheduler.Jobs();
  REQUIRE(jobs.size() == 3);  // that of the next boot is done
  CHECK((jobs[0].exitCode == 7u && jobs[0].process == 0 && jobs[0].error.empty()));
  CHECK(zumat::FormatMoment(jobs[0].lastStart.value()).starts_with("2050-06-01T10:31:0"));
  CHECK((!jobs[1].lastStart && jobs[1].error == "tokens.tok does not name the program NOPE"));
  scheduler.Prepare("Code=7", "NOPE");
  CHECK(scheduler.Run("-run -until:1 -now:01/06/2050-10:32") == 0);
  for (const auto& [command, starts] : {std::pair("KELTEST -X", 1), {"KELUPG", 1}, {"BOOT", 2}, {"LATE", 1}})
    CHECK_MESSAGE(scheduler.Starts(command) == starts, command);
}

TEST_CASE("zumat.exe -run: a start is made once, later, if its write fails or the scheduler is killed before it") {
  const Scheduler scheduler;
  scheduler.Prepare("Code=7");
  REQUIRE(scheduler.Run("-TaskID:1 -addjob:KEPLPMNG:\"ONCE\" -Every:Days:1") == 0);
  const std::string before = scheduler.Text(), run = "-run -until:2 -now:01/06/2050-10:31";
  {
    const support::LockedFile held(scheduler.file, FILE_SHARE_READ);
    CHECK(scheduler.Run(run) == zumat::kFileFailure);
    const win::Process killed = scheduler.Start(run);
    Scheduler::Await([&] { return scheduler.FilesOfJobs() == 3; });  // the temporary one: the job's process exists
    TerminateProcess(win::ProcessHandle(OpenProcess(PROCESS_TERMINATE, FALSE, killed.Id())).Get(), 9);
    CHECK(Scheduler::End(killed) == 9);
    Scheduler::Await([&] { return std::fstream(scheduler / "Programs\\KEPLPMNG.exe").is_open(); });  // not in use
  }
  CHECK((scheduler.Starts("ONCE") == 0 && scheduler.Text() == before));
  CHECK((scheduler.Run(run) == 0 && scheduler.Starts("ONCE") == 1));
}

TEST_CASE("zumat.exe -run: one at a time, sees changes, ends by -stop and Ctrl+C, no job runs twice at once") {
  const Scheduler scheduler;
  scheduler.Prepare("DelayMilliseconds=6000");
  CHECK(scheduler.Run("-stop") == 0);
  const win::Process first = scheduler.Start("-run -now:01/06/2050-10:31");
  scheduler.AwaitLine("the scheduler runs");
  CHECK(scheduler.Run("-run") == zumat::kAlreadyRunning);
  CHECK(scheduler.Run("-TaskID:1 -addjob:KEPLPMNG:\"LONG\" -EveryHoursMins:0:1") == 0);
  scheduler.AwaitLine("job 1 started");
  CHECK((scheduler.Run("-stop") == 0 && Scheduler::End(first) == 0 && scheduler.Jobs()[0].process != 0));
  const win::Process second = scheduler.Start("-run -now:01/06/2050-10:40", CREATE_NEW_CONSOLE);  // minutes later
  scheduler.AwaitLine("job 1 skipped");
  scheduler.AwaitLine("job 1 ended with 0");
  FreeConsole();
  CHECK((AttachConsole(second.Id()) && SetConsoleCtrlHandler(nullptr, TRUE)));  // this process ignores it
  CHECK((GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) && Scheduler::End(second) == 0));
  SetConsoleCtrlHandler(nullptr, FALSE);
  CHECK(scheduler.Log().ends_with(";0;-run -now:01/06/2050-10:40\r\n"));
  CHECK((scheduler.Starts("LONG") == 1 && scheduler.Jobs()[0].exitCode == 0u));
}
