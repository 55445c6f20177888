// zumat.exe: the command-line scheduler of the agent, as far as keeping the jobs goes. It starts none.
#define _CRT_RAND_S  // rand_s
#include <windows.h>

#include <cstdlib>
#include <exception>

#include "logfile/module_log.h"
#include "zumat/changes.h"
#include "zumat/job_file.h"
#include "zumat/listing.h"
#include "zumat/words.h"

namespace zumat {
namespace {

constexpr std::size_t kMaximumLogged = 640;  // bytes of an exit code and its command: a line of the log is bounded

/// UTF-8, with replacement characters for what is no character.
std::string Utf8FromWide(const wchar_t* wide) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  std::string text(size > 0 ? static_cast<std::size_t>(size) : 1, '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
  text.pop_back();  // the terminator
  return text;
}

/// The folder `Config` beside the program; none when the program's path is too long.
std::string ConfigFolder() {
  char path[MAX_PATH];
  const DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
  if (length == 0 || length >= sizeof path) return {};
  const std::string_view program(path, length);
  return std::string(program.substr(0, program.rfind('\\'))) + "\\Config";
}

Moment PresentMoment() {
  SYSTEMTIME time;
  GetLocalTime(&time);
  const Day day{std::chrono::year(time.wYear) / time.wMonth / time.wDay};
  unsigned random = 0;
  rand_s(&random);
  return {day + std::chrono::minutes(time.wHour * 60 + time.wMinute), random};
}

/// The program may have been started without standard handles: then nobody reads, and that is no failure.
void Print(DWORD standardHandle, const std::string& text) noexcept {
  const UINT codePage = GetConsoleOutputCP();
  SetConsoleOutputCP(CP_UTF8);
  DWORD written = 0;
  WriteFile(GetStdHandle(standardHandle), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  SetConsoleOutputCP(codePage);
}

/// What a command that succeeds prints is its message.
Outcome RunOnJobs(const Command& command) {
  const std::string folder = ConfigFolder();
  if (folder.empty()) return {kFileFailure, "the path of the program is too long"};
  JobFile file(folder);
  Jobs jobs;
  if (Outcome outcome = file.Lock(); !outcome.Succeeded()) return outcome;
  if (Outcome outcome = file.Read(jobs); !outcome.Succeeded()) return outcome;
  const Moment moment = PresentMoment();
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
    Outcome outcome = ReadCommand(arguments, command);
    if (!outcome.Succeeded()) return outcome;
    if (command.action == Action::kHelp) return {kSuccess, kHelpText};
    return RunOnJobs(command);
  } catch (const std::exception& error) {
    return {kUnexpected, std::string("unexpected failure: ") + error.what()};
  }
}

/// A log that cannot be written changes nothing about the command.
void Log(const std::string& arguments, const Outcome& outcome) {
  std::string text = std::to_string(outcome.result) + ";" + OnOneLine(arguments);
  if (text.size() > kMaximumLogged) text.replace(kMaximumLogged - 3, std::string::npos, "...");
  logfile::LogBesideModule(text.c_str());
}

int Main() {
  const std::string commandLine = Utf8FromWide(GetCommandLineW());
  const std::string arguments(BehindProgram(commandLine));
  const Outcome outcome = Run(arguments);
  const bool endsLine = outcome.message.ends_with('\n');
  Print(outcome.Succeeded() ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE,
        (outcome.Succeeded() ? "" : "zumat: ") + outcome.message + (endsLine ? "" : "\n"));
  Log(arguments, outcome);
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
