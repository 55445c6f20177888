// zumat.exe: the command-line scheduler of the agent.
#define _CRT_RAND_S  // rand_s
#include <windows.h>

#include <cstdlib>
#include <exception>

#include "shared/texts.h"
#include "zumat/job_file.h"
#include "zumat/jobs_text.h"
#include "zumat/runner.h"

namespace zumat {
namespace {

/// Prints a text of UTF-8. The program may have been started without standard handles: that is not a failure.
void Print(DWORD standardHandle, const std::string& text) noexcept {
  const UINT codePage = GetConsoleOutputCP();
  SetConsoleOutputCP(CP_UTF8);
  DWORD written = 0;
  WriteFile(GetStdHandle(standardHandle), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  SetConsoleOutputCP(codePage);
}

}  // namespace

void Report(const std::string& line) {
  Print(STD_OUTPUT_HANDLE, line + "\n");
  devkit::LogCall(line);
}

namespace {

/// The command line in UTF-8, with replacement characters for invalid UTF-16.
std::string CommandLineUtf8() {
  const wchar_t* const wide = GetCommandLineW();
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  std::string text(size > 0 ? static_cast<std::size_t>(size) : 1, '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
  text.pop_back();  // the terminator
  return text;
}

/// The message of a successful command is its output.
Outcome RunOnJobs(const Command& command, const std::string& folder) {
  const JobFile file(folder, 30 * 1000);  // KELUtils waits 90 seconds for this program
  Jobs jobs;
  if (Outcome outcome = file.Read(jobs); !outcome.Succeeded()) return outcome;
  unsigned random = 0;
  rand_s(&random);
  const Moment moment{LocalTime(), random};
  if (command.action == Action::kList)
    return {kSuccess, command.json ? RenderJson(jobs, moment.now) : RenderTable(jobs, moment.now)};
  Jobs changed = jobs;
  Outcome outcome = Change(command, moment, changed);
  if (!outcome.Succeeded() || changed == jobs) return outcome;
  const Outcome written = file.Write(changed);
  return written.Succeeded() ? outcome : written;
}

Outcome Run(const std::string& arguments) {
  try {
    Command command;
    if (Outcome outcome = ReadCommand(arguments, command); !outcome.Succeeded()) return outcome;
    const std::string folder = devkit::NextToModule("Config");
    switch (command.action) {
      case Action::kHelp:
        return {kSuccess, kHelpText};
      case Action::kRun:
        return RunScheduler(folder, command);
      case Action::kStop:
        return StopScheduler(folder);
      default:
        return RunOnJobs(command, folder);
    }
  } catch (const std::exception& error) {
    return {kUnexpected, std::string("unexpected failure: ") + error.what()};
  }
}

int Main() {
  const std::string commandLine = CommandLineUtf8();
  const std::string arguments(ArgumentsOf(commandLine));
  const Outcome outcome = Run(arguments);
  const bool endsLine = outcome.message.ends_with('\n');
  Print(outcome.Succeeded() ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE,
        (outcome.Succeeded() ? "" : "zumat: ") + outcome.message + (endsLine ? "" : "\n"));
  // A log that cannot be written changes nothing about the command.
  devkit::LogCall(std::to_string(outcome.result) + ";" + devkit::OneLine(arguments.c_str()));
  return static_cast<int>(outcome.result);
}

}  // namespace
}  // namespace zumat

int main() {
  try {
    return zumat::Main();
  } catch (const std::exception&) {
    return zumat::kUnexpected;
  }
}
