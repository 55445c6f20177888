#include <windows.h>

#include <ostream>
#include <string>

#include "KELUtils.h"
#include "arguments.h"
#include "calls.h"
#include "code_page.h"
#include "commands.h"
#include "win/process.h"

namespace kelctl {
namespace {

struct JobOptions {
  std::string program = "KEPLPMNG", module, arguments, day, time, start, end, recurrence, command;
  std::int32_t taskId = 0, period = 0, delay = 0;
  bool randomWeekday = false;
};

// Minutes since midnight of "HH:MM".
std::int32_t MinuteOf(const std::string& time) {
  const auto digit = [&](std::size_t at) { return time[at] >= '0' && time[at] <= '9'; };
  if (time.size() != 5 || time[2] != ':' || !digit(0) || !digit(1) || !digit(3) || !digit(4)) {
    throw UsageError("\"" + time + "\" is not a time of day, HH:MM");
  }
  const std::int32_t hours = ParseNumber(time.substr(0, 2)), minutes = ParseNumber(time.substr(3));
  if (hours > 23 || minutes > 59) throw UsageError(time + " is out of range: 00:00 to 23:59");
  return hours * 60 + minutes;
}

// In the code page; a double quote would end the scheduler's text early.
std::string JobText(const Library& library, const std::string& text) {
  if (text.find('"') != text.npos) throw UsageError("a job cannot have a double quote in it");
  CheckOneLine(text);
  return library.ToCodePage(text);
}

void ScheduleDefaults(Session& session) {
  const auto library = session.OpenTheLibrary();
  ThrowUnlessSuccess("KE_ScheduleDefaultTasks", KELCTL_EXPORT(*library, KE_ScheduleDefaultTasks)());
}

void SetAtFixedTime(Session& session, const JobOptions& job) {
  const auto library = session.OpenTheLibrary();
  auto* const set = KELCTL_EXPORT(*library, KE_SetTask);
  ThrowUnlessSuccess("KE_SetTask", set(JobText(*library, job.program).c_str(), JobText(*library, job.module).c_str(),
                                       JobText(*library, job.arguments).c_str(), job.taskId,
                                       JobText(*library, job.day).c_str(), JobText(*library, job.time).c_str()));
}

void SetPeriodic(Session& session, const JobOptions& job) {
  const auto library = session.OpenTheLibrary();
  auto* const set = KELCTL_EXPORT(*library, KE_SetPeriodicTask);
  ThrowUnlessSuccess("KE_SetPeriodicTask",
                     set(JobText(*library, job.program).c_str(), JobText(*library, job.module).c_str(),
                         JobText(*library, job.arguments).c_str(), job.taskId, job.period, job.randomWeekday));
}

void SetWindowed(Session& session, const JobOptions& job) {
  const auto library = session.OpenTheLibrary();
  const std::int32_t start = MinuteOf(job.start), end = MinuteOf(job.end);
  const std::string module = JobText(*library, job.module), arguments = JobText(*library, job.arguments);
  if (job.recurrence.empty()) {
    auto* const set = KELCTL_EXPORT(*library, KE_SetPeriodicTaskEx);
    return ThrowUnlessSuccess("KE_SetPeriodicTaskEx", set(module.c_str(), arguments.c_str(), job.taskId, job.period,
                                                          start, end, job.randomWeekday));
  }
  auto* const set = KELCTL_EXPORT(*library, KE_SetPeriodicTaskRangeDate);
  ThrowUnlessSuccess("KE_SetPeriodicTaskRangeDate", set(module.c_str(), arguments.c_str(), job.taskId, job.period,
                                                        start, end, JobText(*library, job.recurrence).c_str()));
}

void SetForNextBoot(Session& session, const JobOptions& job) {
  const auto library = session.OpenTheLibrary();
  std::uint32_t unused = 0;
  auto* const set = KELCTL_EXPORT(*library, KE_ScheduleTaskReboot);
  ThrowUnlessSuccess("KE_ScheduleTaskReboot", set(JobText(*library, job.command).c_str(), job.delay, &unused));
}

void DeleteForNextBoot(Session& session) {
  const auto library = session.OpenTheLibrary();
  ThrowUnlessSuccess("KE_RemoveScheduleTaskReboot", KELCTL_EXPORT(*library, KE_RemoveScheduleTaskReboot)(0));
}

// The library has no export that lists jobs: the scheduler beside it is asked, which writes to this program's output.
void List(Session& session) {
  const auto library = session.OpenTheLibrary();
  const std::string scheduler = library->Folder() + "\\..\\Scheduler\\zumat.exe";
  session.out.flush();
  const win::Process process =
      win::StartProcess(WideFromUtf8("\"" + scheduler + "\" -list" + (session.json ? " --json" : "")), DWORD{0});
  if (!process)
    throw LibraryError("cannot start " + scheduler + " (Windows error " + std::to_string(GetLastError()) + ")");
  process.Wait(INFINITE);
  session.exitCode = static_cast<int>(process.ExitCode().value_or(1));
}

using Options = std::shared_ptr<JobOptions>;

CLI::App* AddJob(CLI::App& jobs, const char* name, const char* description, const Options& options) {
  CLI::App* const command = jobs.add_subcommand(name, description);
  command->add_option("ID", options->taskId, "The job's task ID")->required()->type_name("");
  return command;
}

void AddModule(CLI::App* command, const Options& options) {
  command->add_option("MODULE", options->module, "The module that runs")->required()->type_name("");
  command->add_option("ARGUMENTS", options->arguments, "Its arguments; behind -- when they begin with -")
      ->type_name("");
}

void AddProgram(CLI::App* command, const Options& options) {
  command->add_option("--program", options->program, "The program that the scheduler starts")->capture_default_str();
}

void AddPeriod(CLI::App* command, const Options& options) {
  command->add_option("MINUTES", options->period, "The period")->required()->type_name("");
  command->add_flag("--random-weekday", options->randomWeekday, "On one day from Monday to Friday that is drawn");
}

void AddSetCommands(CLI::App& jobs, Session& session) {
  const auto options = std::make_shared<JobOptions>();
  CLI::App* const set = AddJob(jobs, "set", "Adds a job at a fixed day and time", options);
  set->add_option("DAY", options->day, "The day, in the scheduler's notation")->required()->type_name("");
  set->add_option("TIME", options->time, "The time, in the scheduler's notation")->required()->type_name("");
  AddModule(set, options);
  AddProgram(set, options);
  set->footer("Example: kelctl jobs set 70 24/12/2024 18:30 KELSCAN -- -full");
  set->callback([&session, options] { SetAtFixedTime(session, *options); });

  CLI::App* const period = AddJob(jobs, "period", "Sets a periodic job", options);
  AddPeriod(period, options);
  AddModule(period, options);
  AddProgram(period, options);
  period->footer("Example: kelctl jobs period 9 60 KELUPD");
  period->callback([&session, options] { SetPeriodic(session, *options); });

  CLI::App* const window =
      AddJob(jobs, "window", "Sets a periodic job that starts within a window of the day", options);
  AddPeriod(window, options);
  window->add_option("START", options->start, "HH:MM")->required()->type_name("");
  window->add_option("END", options->end, "HH:MM")->required()->type_name("");
  AddModule(window, options);
  window->add_option("--recurrence", options->recurrence, "In the scheduler's notation, in place of the period")
      ->excludes("--random-weekday");
  window->footer("Example: kelctl jobs window 70 1440 12:00 13:30 KELSCAN -- -full");
  window->callback([&session, options] { SetWindowed(session, *options); });
}

void AddBootCommands(CLI::App& jobs, Session& session) {
  const auto options = std::make_shared<JobOptions>();
  CLI::App* const boot = jobs.add_subcommand("next-boot", "Has the plug-in manager run a command after the next boot");
  boot->add_option("COMMAND", options->command, "The command")->required()->type_name("");
  boot->add_option("--delay", options->delay, "Seconds after the boot")->capture_default_str();
  boot->footer("Example: kelctl jobs next-boot \"KELUPG -CONTINUE\" --delay 90");
  boot->callback([&session, options] { SetForNextBoot(session, *options); });

  CLI::App* const remove =
      jobs.add_subcommand("delete-next-boot", "Calls the export that is to remove such a job, and does nothing");
  remove->footer("Example: kelctl jobs delete-next-boot");
  remove->callback([&session] { DeleteForNextBoot(session); });
}

}  // namespace

void AddJobsCommand(CLI::App& kelctl, Session& session) {
  CLI::App* const jobs = kelctl.add_subcommand("jobs", "Schedules jobs, and lists them");
  jobs->require_subcommand(1);
  jobs->footer("Example: kelctl jobs default");
  CLI::App* const defaults = jobs->add_subcommand("default", "Schedules the agent's own jobs");
  defaults->footer("Example: kelctl jobs default");
  defaults->callback([&session] { ScheduleDefaults(session); });

  CLI::App* const list = jobs->add_subcommand("list", "Has the scheduler list its jobs");
  list->footer("Example: kelctl jobs list --json");
  list->callback([&session] { List(session); });
  AddSetCommands(*jobs, session);
  AddBootCommands(*jobs, session);
}

}  // namespace kelctl
