#include "zumat/runner.h"

#include <algorithm>
#include <map>
#include <vector>

#include "shared/texts.h"
#include "win/file.h"
#include "win/process.h"
#include "zumat/job_file.h"
#include "zumat/schedule.h"

namespace zumat {
namespace {

using devkit::SharedFileLock;
using win::EventHandle;

constexpr DWORD kTickMilliseconds = 500;
constexpr std::size_t kLongestTokens = 64 * 1024;  // bytes of tokens.tok

constexpr char kUnknownEnd[] = "ended while no scheduler was running";

HANDLE g_stop = nullptr;  // for the console's thread, as long as a scheduler runs

BOOL WINAPI OnConsoleEvent(DWORD) noexcept { return SetEvent(g_stop); }

/// Held by the one scheduler of a folder.
std::string RunningPath(const std::string& folder) { return folder + "\\scheduler"; }

std::string StopName(const std::string& folder) { return devkit::ObjectName("zumat-stop", folder.c_str()); }

std::wstring Widen(UINT codePage, const std::string& text) {
  const int length = static_cast<int>(text.size());
  std::wstring wide(text.size(), L'\0');  // no text has more UTF-16 units than bytes
  const int units = MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), length);
  return wide.substr(0, static_cast<std::size_t>(units));
}

win::ProcessHandle OpenById(DWORD id) noexcept {
  return win::ProcessHandle(OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
}

/// 0 when there is no process of that number.
std::uint64_t CreationTime(DWORD id) noexcept {
  FILETIME created{}, ended, kernel, user;
  const win::ProcessHandle process = OpenById(id);
  if (!process || !GetProcessTimes(process.Get(), &created, &ended, &kernel, &user)) return 0;
  return (std::uint64_t{created.dwHighDateTime} << 32) | created.dwLowDateTime;
}

/// Processes that are created but do not run before `Resume`. Without it they never run: they end with this object, or,
/// when the scheduler is killed, with the job object that Windows then closes.
class NewProcesses {
 public:
  NewProcesses() noexcept : group_(CreateJobObjectW(nullptr, nullptr)) { Limit(JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE); }
  ~NewProcesses() {
    for (const Created& created : created_) TerminateProcess(created.process.Get(), 0);
  }
  NewProcesses(const NewProcesses&) = delete;
  NewProcesses& operator=(const NewProcesses&) = delete;

  void Add(int jobId, win::Process process) {
    const PROCESS_INFORMATION made = process.Release();
    created_.push_back({jobId, made.dwProcessId, win::ProcessHandle(made.hProcess), win::ProcessHandle(made.hThread)});
    AssignProcessToJobObject(group_.Get(), made.hProcess);
  }

  /// Lets the processes run, and moves them to `running`.
  void Resume(std::map<int, win::Process>& running) {
    Limit(0);
    for (Created& created : created_) {
      ResumeThread(created.thread.Get());
      running[created.jobId] = win::Process({created.process.Release(), nullptr, created.id, 0});
      Report("job " + std::to_string(created.jobId) + " started");
    }
    created_.clear();
  }

 private:
  struct Created {
    int jobId;
    DWORD id;
    win::ProcessHandle process;
    win::ProcessHandle thread;
  };

  void Limit(DWORD flags) noexcept {
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limit{};
    limit.BasicLimitInformation.LimitFlags = flags;
    SetInformationJobObject(group_.Get(), JobObjectExtendedLimitInformation, &limit, sizeof limit);
  }

  win::ProcessHandle group_;
  std::vector<Created> created_;
};

class Runner {
 public:
  Runner(std::string folder, std::chrono::seconds offset) : folder_(std::move(folder)), offset_(offset), boot_(Now()) {}

  /// Records the processes that have ended, and starts the jobs that are due. The first call also takes over the
  /// processes of an earlier scheduler and arms the jobs of this boot. Does nothing while other processes keep the jobs
  /// file locked.
  Outcome Tick();

 private:
  Second Now() const noexcept { return LocalTime() + offset_; }
  win::FileStatus FileStatus() const noexcept { return win::StatusOf(folder_ + "\\jobs.json"); }
  bool IsRunning(const Job& job) const { return running_.contains(job.id); }
  bool HasWork() const;
  void Adopt(Job& job);
  void RecordEnds();
  void CreateDueProcesses(NewProcesses& created);
  void CreateProcessOf(Job& job, Second now, NewProcesses& created);

  const std::string folder_;
  const std::chrono::seconds offset_;  // of the clock that -now has set
  const Second boot_;
  bool begun_ = false;
  Jobs jobs_;                            // as they were read or written last
  win::FileStatus seen_;                 // of the file then
  std::map<int, win::Process> running_;  // by the job's task ID
};

/// The processes run only after the file with their starts is written: no start is repeated after a failure, or by the
/// successor of a scheduler that is killed.
Outcome Runner::Tick() {
  if (!HasWork()) return {};
  const JobFile file(folder_, 1000);
  Outcome outcome = file.Read(jobs_);
  if (outcome.result == kBusy) return Report(outcome.message), Outcome();
  if (!outcome.Succeeded()) return outcome;
  const Jobs before = jobs_;
  if (!begun_) {
    for (Job& job : jobs_) Adopt(job);
    ArmForBoot(jobs_);
    begun_ = true;
  }
  RecordEnds();
  NewProcesses created;
  CreateDueProcesses(created);
  if (jobs_ != before) outcome = file.Write(jobs_);
  if (outcome.Succeeded()) created.Resume(running_);
  seen_ = FileStatus();
  return outcome;
}

bool Runner::HasWork() const {
  const win::FileStatus status = FileStatus();
  if (!begun_ || status.written != seen_.written || status.size != seen_.size) return true;
  for (const auto& [id, process] : running_) {
    if (process.Wait(0) == WAIT_OBJECT_0) return true;
  }
  return std::ranges::any_of(jobs_,
                             [&](const Job& job) { return StepOf(job, IsRunning(job), boot_, Now()) != Step::kWait; });
}

void Runner::Adopt(Job& job) {
  if (job.process == 0) return;
  win::Process process({OpenById(job.process).Release(), nullptr, job.process, 0});
  if (process && CreationTime(job.process) == job.created) {
    running_[job.id] = std::move(process);
    return;
  }
  job.process = 0;
  job.error = kUnknownEnd;
}

void Runner::RecordEnds() {
  std::erase_if(running_, [this](const auto& entry) {
    const auto& [id, process] = entry;
    if (process.Wait(0) != WAIT_OBJECT_0) return false;
    const auto code = process.ExitCode();
    Report("job " + std::to_string(id) + " ended with " + (code ? std::to_string(*code) : "an unknown exit code"));
    Job* const job = FindJob(id, jobs_);
    if (job == nullptr || job->process != process.Id()) return true;  // deleted, or replaced by another job
    job->process = 0;
    job->exitCode = code;
    job->error = code ? "" : kUnknownEnd;
    if (job->clauses.recurrence == Recurrence::kNextBoot && job->lastStart)
      std::erase_if(jobs_, [finished = job->id](const Job& done) { return done.id == finished; });
    return true;
  });
}

void Runner::CreateDueProcesses(NewProcesses& created) {
  const Second now = Now();
  for (Job& job : jobs_) {
    const Step step = StepOf(job, IsRunning(job), boot_, now);
    if (step == Step::kWait) continue;
    job.handled = now;
    job.armed = false;
    if (step == Step::kStart)
      CreateProcessOf(job, now, created);
    else
      Report("job " + std::to_string(job.id) + " skipped: it still runs, or has run within its window");
  }
}

void Runner::CreateProcessOf(Job& job, Second now, NewProcesses& created) {
  const auto tokens = devkit::ReadShared(folder_ + "\\tokens.tok", kLongestTokens);
  const std::string path = FindProgram(tokens.value_or(""), job.program);
  win::Process process;
  if (!path.empty()) {
    process = win::StartProcess(L"\"" + Widen(CP_ACP, path) + L"\" " + Widen(CP_UTF8, job.command),
                                CREATE_SUSPENDED | DETACHED_PROCESS | CREATE_NEW_PROCESS_GROUP);
  }
  job.exitCode.reset();
  if (process) {
    job.lastStart = now;
    job.error.clear();
    job.process = process.Id();
    job.created = CreationTime(process.Id());
    created.Add(job.id, std::move(process));
  } else {
    job.error = path.empty() ? "tokens.tok does not name the program " + job.program
                             : FileFailure(path + " cannot be started").message;
    job.error = devkit::OneLine(job.error.c_str(), kMaximumError - 3);
    Report("job " + std::to_string(job.id) + ": " + job.error);
  }
}

Outcome RunUntilStopped(Runner& runner, HANDLE stop, std::optional<int> seconds) {
  const ULONGLONG begin = GetTickCount64();
  Outcome outcome;
  while (outcome.Succeeded()) {
    outcome = runner.Tick();
    if (!outcome.Succeeded()) break;
    if (seconds && GetTickCount64() - begin >= 1000ull * static_cast<unsigned>(*seconds)) break;
    if (WaitForSingleObject(stop, kTickMilliseconds) != WAIT_TIMEOUT) break;
  }
  return outcome.Succeeded() ? Outcome{kSuccess, "the scheduler has ended"} : outcome;
}

}  // namespace

Outcome RunScheduler(const std::string& folder, const Command& command) {
  const SharedFileLock single(RunningPath(folder).c_str(), 0);
  if (!single.Held()) return {kAlreadyRunning, "another scheduler runs on these jobs"};
  const EventHandle stop(CreateEventA(nullptr, TRUE, FALSE, StopName(folder).c_str()));
  if (!stop) return FileFailure("the event of -stop cannot be made");
  ResetEvent(stop.Get());
  g_stop = stop.Get();
  SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
  Report("the scheduler runs; zumat -stop ends it");
  Runner runner(folder, command.now ? *command.now - LocalTime() : std::chrono::seconds(0));
  Outcome outcome = RunUntilStopped(runner, stop.Get(), command.until);
  SetConsoleCtrlHandler(OnConsoleEvent, FALSE);
  return outcome;
}

Outcome StopScheduler(const std::string& folder) {
  const EventHandle stop(OpenEventA(EVENT_MODIFY_STATE, FALSE, StopName(folder).c_str()));
  if (!stop) return {kSuccess, "no scheduler runs"};
  SetEvent(stop.Get());
  const SharedFileLock ended(RunningPath(folder).c_str(), 30 * 1000);
  return ended.Held() ? Outcome{kSuccess, "the scheduler has ended"} : Outcome{kBusy, "the scheduler does not end"};
}

}  // namespace zumat
