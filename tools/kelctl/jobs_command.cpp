// The commands below jobs and event that ask the scheduler or read its and the event module's files: the library has no
// export for them.
#include <windows.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "diagnosis/log_file.h"
#include "diagnosis/product.h"
#include "piped_child.h"
#include "siblings/sibling_table.h"
#include "texts.h"
#include "win/file.h"

namespace kelctl {
namespace {

constexpr DWORD kLongestWait = 90000;  // milliseconds, as the library waits for the scheduler
constexpr std::uint64_t kLargestFile = std::uint64_t{16} * 1024 * 1024;

struct ProgramOutcome {
  DWORD exitCode;
  std::string output;
};

// Runs a program (command line in UTF-8) and reads its output, until its end or a silence of so many milliseconds.
ProgramOutcome RunProgram(const std::string& commandLine, DWORD longestSilence) {
  const PipedChild child = StartPiped(WideFromUtf8(commandLine), true);
  if (!child.output) throw CommandError(kCallFailed, "cannot make a pipe (" + WindowsError(child.error) + ")");
  if (!child.process) throw LibraryError("cannot start " + commandLine + " (" + WindowsError(child.error) + ")");
  ProgramOutcome outcome{};
  for (std::string part = NextOutput(child, longestSilence); !part.empty(); part = NextOutput(child, longestSilence))
    outcome.output += part;
  if (WaitForSingleObject(child.process.Get(), longestSilence) != WAIT_OBJECT_0 ||
      !GetExitCodeProcess(child.process.Get(), &outcome.exitCode)) {
    throw CommandError(kCallFailed, "no end of " + commandLine);
  }
  std::erase(outcome.output, '\r');
  return outcome;
}

// The scheduler, where the library looks for it: in the folder Scheduler, else next to the library.
ProgramOutcome AskScheduler(const Session& session, const std::string& arguments) {
  const Product product(LibraryPath(session.libraryPath));
  const auto& [file, folder, fallback] = siblings::kScheduler;
  std::string scheduler = product.Path({folder, file});
  if (!win::Exists(scheduler)) scheduler = product.Path({fallback, file});
  if (!win::Exists(scheduler))
    throw LibraryError("cannot start " + Utf8FromCodePage(scheduler) + ": the file is missing");
  ProgramOutcome outcome = RunProgram("\"" + Utf8FromCodePage(scheduler) + "\" " + arguments, kLongestWait);
  if (outcome.exitCode == 0) return outcome;
  throw CommandError(kCallFailed, "the scheduler ended with exit code " + std::to_string(outcome.exitCode) +
                                      (outcome.output.empty() ? "" : ": " + outcome.output));
}

nlohmann::ordered_json Jobs(const Session& session) {
  auto document = nlohmann::ordered_json::parse(AskScheduler(session, "-list --json").output, nullptr, false);
  if (!document.is_object() || !document.contains("jobs")) {
    throw CommandError(kCallFailed, "the scheduler's answer is not a list of jobs");
  }
  return document;
}

void ListJobs(Session& session) {
  if (session.json) return session.Show("", Jobs(session));
  session.Show(AskScheduler(session, "-list").output, {});
}

// The path for a program's name, as the scheduler finds it in tokens.tok: a line NAME=e"PATH".
std::string ProgramOf(const Product& product, const std::string& name) {
  const std::string tokens = EndOfFile(product.Path({"Scheduler", "Config\\tokens.tok"}), kLargestFile).value_or("");
  const std::string begin = name + "=e\"";
  std::size_t at = tokens.find(begin);
  while (at != tokens.npos && at != 0 && tokens[at - 1] != '\n') at = tokens.find(begin, at + 1);
  if (at == tokens.npos) throw CommandError(kCallFailed, "tokens.tok does not name " + name + ": kelctl init FOLDER");
  const std::size_t path = at + begin.size();
  return Utf8FromCodePage(tokens.substr(path, tokens.find('"', path) - path));
}

void RunJob(Session& session, const std::string& typed) {
  const std::int64_t id = ParseNumber(typed, 1);
  const nlohmann::ordered_json list = Jobs(session);
  for (const auto& job : list["jobs"]) {
    if (job.value("id", std::int64_t{0}) != id) continue;
    const Product product(LibraryPath(session.libraryPath));
    const std::string commandLine =
        "\"" + ProgramOf(product, job.value("program", "")) + "\" " + job.value("command", "");
    const ProgramOutcome outcome = RunProgram(commandLine, INFINITE);
    if (outcome.exitCode != 0) session.exitCode = kCallFailed;
    return session.Show(commandLine + "\nended with exit code " + std::to_string(outcome.exitCode) + "\n",
                        {{"command", commandLine}, {"exitCode", outcome.exitCode}});
  }
  throw CommandError(kCallFailed, "there is no job " + typed + ": kelctl jobs list");
}

void DeleteJob(Session& session, const std::string& typed) {
  const std::string id = std::to_string(ParseNumber(typed, 1));
  AskScheduler(session, "-DeleteJob -TaskID:" + id + " -YES");
}

// The events that wait in the event module's file, one JSON object on each line.
void ListEvents(Session& session) {
  const Product product(LibraryPath(session.libraryPath));
  const std::string text = EndOfFile(product.Path({"KELTVEVT", "events.jsonl"}), kLargestFile).value_or("");
  std::string table;
  auto events = nlohmann::ordered_json::array();
  for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
    end = std::min(text.find('\n', begin), text.size());
    auto event = nlohmann::ordered_json::parse(text.substr(begin, end - begin), nullptr, false);
    if (!event.is_object()) continue;
    table += event.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
    events.push_back(std::move(event));
  }
  session.Show(table.empty() ? "no events\n" : table, {{"events", std::move(events)}});
}

}  // namespace

void AddJobCommands(CLI::App& kelctl, Session& session) {
  CLI::App* const jobs = kelctl.get_subcommand("jobs");
  CLI::App* const list = jobs->add_subcommand("list", "Has the scheduler list its jobs");
  list->footer("Example: kelctl jobs list --json");
  list->callback([&session] { ListJobs(session); });
  const auto id = std::make_shared<std::string>();
  const auto add = [&](const char* name, const char* description, void (*work)(Session&, const std::string&),
                       const char* footer) {
    CLI::App* const command = jobs->add_subcommand(name, description);
    command->add_option("ID", *id, "The job's task ID")->required()->type_name("");
    command->footer(footer);
    command->callback([&session, id, work] { work(session, *id); });
  };
  add("run", "Runs a job's program now, and waits for its end", RunJob, "Example: kelctl jobs run 9");
  add("delete", "Has the scheduler delete a job", DeleteJob, "Example: kelctl jobs delete 70");
  CLI::App* const events =
      kelctl.get_subcommand("event")->add_subcommand("list", "Shows the events that wait to be sent");
  events->footer("Example: kelctl event list --json");
  events->callback([&session] { ListEvents(session); });
}

}  // namespace kelctl
