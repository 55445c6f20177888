#include <doctest/doctest.h>

#include <vector>

#include "support/product_tree.h"
#include "win/process.h"
#include "zumat/jobs_text.h"

namespace {

// The program in a product tree, called as the library calls it: by a path that leads through another folder, without
// an extension, detached and without standard handles.
struct Scheduler : support::Folder {
  Scheduler() {
    for (const char* folder : {"KELUtils", "Scheduler"}) std::filesystem::create_directory(Path(folder));
    std::filesystem::copy_file(support::BuildFolder() / "devkit" / "zumat.exe", Path("Scheduler/zumat.exe"));
  }
  std::string Line(const std::string& arguments) const {
    return "\"" + *this / "KELUtils" + "\\..\\Scheduler\\zumat\" " + arguments;
  }
  win::Process Start(const std::string& arguments) const {
    win::Process process = win::StartProcess(
        Line(arguments),
        {.creationFlags = CREATE_NEW_PROCESS_GROUP | DETACHED_PROCESS, .startupFlags = STARTF_FORCEOFFFEEDBACK});
    REQUIRE(process);
    return process;
  }
  DWORD Run(const std::string& arguments) const {
    const win::Process process = Start(arguments);
    CHECK(process.Wait(60000) == WAIT_OBJECT_0);
    return process.ExitCode().value();
  }
  std::string Text() const { return support::ReadFile(file); }
  zumat::Jobs Jobs() const {
    zumat::Jobs jobs;
    CHECK(zumat::ReadJobs(Text(), jobs).message == "");
    return jobs;
  }
  std::string LastLogLine() const {
    const std::string log = support::ReadFile(Path("Scheduler/zumat.log"));
    return log.size() < 2 ? log : log.substr(log.rfind('\n', log.size() - 2) + 1);
  }
  std::filesystem::path file = Path("Scheduler/Config/jobs.json");
};

const std::string kDaily = "\"KELREPORT -R\" -Every:Days:1 -StartTime:00:29 -StartTimeRnd:01:00 ";

}  // namespace

TEST_CASE("zumat.exe: detached, add then edit creates and redefines; every command is logged with its result") {
  const Scheduler scheduler;
  for (const std::string program : {"KEPWINST", "KEPLPMNG"}) {
    CAPTURE(program);
    CHECK(scheduler.Run("-TaskID:12 -addjob:" + program + ":" + kDaily) == 0);
    CHECK(scheduler.Run("-TaskID:12 -editjob:0:" + program + ":" + kDaily) == 0);
  }
  const zumat::Jobs jobs = scheduler.Jobs();
  REQUIRE(jobs.size() == 1);
  CHECK((jobs[0].id == 12 && jobs[0].program == "KEPLPMNG" && jobs[0].command == "KELREPORT -R" && jobs[0].active));
  CHECK((jobs[0].start >= 29 && jobs[0].start <= 60));
  CHECK(scheduler.LastLogLine().ends_with(";0;-TaskID:12 -editjob:0:KEPLPMNG:" + kDaily + "\r\n"));
  CHECK(scheduler.Run("-TaskID:13 -activate:0") == zumat::kNoSuchJob);
  CHECK(scheduler.LastLogLine().ends_with(";10;-TaskID:13 -activate:0\r\n"));

  const std::string longText = "x\xF1" + std::string(8000, 'x');  // a character of the system's code page
  CHECK(scheduler.Run("-addjob:KEPLPMNG:\"" + longText + "\" -Next:Boot:60") == 0);
  CHECK(scheduler.Jobs().back().command == "x\xC3\xB1" + longText.substr(2));
  CHECK(scheduler.LastLogLine().ends_with("xxx...\r\n"));
  const auto list = support::RunProgram(scheduler.Line("-list"));
  CHECK((list.exitCode == 0 && list.output.find("\n12       KEPLPMNG  KELREPORT -R  ") != std::string::npos));
  const auto json = support::RunProgram(scheduler.Line("-list --json"));
  CHECK((json.exitCode == 0 && json.output.starts_with("{\n  \"version\": 1,\n  \"now\": \"")));
  CHECK(scheduler.Run("-DeleteJob -TaskID:12 -YES") == 0);
  CHECK((scheduler.Jobs().size() == 1 && scheduler.Jobs()[0].id == zumat::kFirstOwnId));
}

TEST_CASE("zumat.exe: processes take turns, and none of their jobs is lost") {
  const Scheduler scheduler;
  std::vector<win::Process> processes;
  for (int id = 1; id <= 10; ++id)
    processes.push_back(scheduler.Start("-TaskID:" + std::to_string(id) + " -addjob:KEPLPMNG:" + kDaily));
  for (const win::Process& process : processes)
    CHECK((process.Wait(60000) == WAIT_OBJECT_0 && process.ExitCode() == 0));
  CHECK(scheduler.Jobs().size() == 10);

  const std::filesystem::path lock = scheduler.Path("Scheduler/Config/jobs.lock");
  win::FileHandle held(CreateFileW(lock.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
  REQUIRE(LockFile(held.Get(), 0, 0, 1, 0));
  const win::Process waiting = scheduler.Start("-DeleteJob -TaskID:1 -YES");
  CHECK(waiting.Wait(200) == WAIT_TIMEOUT);
  CHECK(scheduler.Jobs().size() == 10);
  held.Reset();
  CHECK((waiting.Wait(60000) == WAIT_OBJECT_0 && waiting.ExitCode() == 0));
  CHECK(scheduler.Jobs().size() == 9);
  CHECK(std::distance(std::filesystem::directory_iterator(scheduler.file.parent_path()), {}) ==
        2);  // nothing is left over
}

TEST_CASE("zumat.exe: what is refused says so in one line and changes nothing") {
  const Scheduler scheduler;
  CHECK(scheduler.Run("-TaskID:1 -addjob:KEPLPMNG:\"M -Every:Days:1") == zumat::kBadQuotes);
  CHECK_FALSE(std::filesystem::exists(scheduler.file.parent_path()));
  REQUIRE(scheduler.Run("-TaskID:1 -addjob:KEPLPMNG:" + kDaily) == 0);
  const std::string good = scheduler.Text();
  struct Row {
    std::string jobs;  // the content of the jobs file
    std::string arguments;
    zumat::Result result;
  };
  const std::string damaged = good.substr(0, good.size() / 2), add = "-TaskID:2 -addjob:KEPLPMNG:" + kDaily;
  const Row rows[] = {
      {good, "", zumat::kNoCommand},
      {good, "-TaskID:1 -editjob:0:KEPLPMNG:\"\" -Every:Days:0", zumat::kBadValue},
      {good, "-TaskID:1 -editjob:0:KEPLPMNG:\"A\"B\" -Every:Days:2", zumat::kBadQuotes},
      {good, "-TaskID:1 -editjob:0:KEPLPMNG:\"\" -Every:Days:2\r\n-x", zumat::kBadValue},
      {good, "-TaskID:1 -DeleteJob", zumat::kMissing},
      {good, "-TaskID:1 -addjob:KEPLPMNG:\"\" -StartDay:32/01/2024 -StartTime:10:00", zumat::kBadValue},
      {good, "-TaskID:2 -activate:0", zumat::kNoSuchJob},
      {damaged, add, zumat::kDamaged},
      {damaged, "-DeleteJob -TaskID:1 -YES", zumat::kDamaged},
      {damaged, "-list", zumat::kDamaged},
      {"", add, zumat::kDamaged},
  };
  for (const Row& row : rows) {
    CAPTURE(std::string(row.arguments));
    support::WriteFile(scheduler.file, row.jobs);
    const auto run = support::RunProgram(scheduler.Line(row.arguments));
    CHECK(run.exitCode == row.result);
    CHECK((run.output.starts_with("zumat: ") && run.output.find('\n') == run.output.size() - 1));
    CHECK(scheduler.Text() == row.jobs);
  }
  std::filesystem::remove_all(scheduler.file.parent_path());
  support::WriteFile(scheduler.file.parent_path(), "not a folder");
  CHECK(scheduler.Run(add) == zumat::kFileFailure);
}
