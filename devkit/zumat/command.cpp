#include "zumat/command.h"

#include <algorithm>

#include "shared/texts.h"
#include "text/text.h"
#include "zumat/jobs.h"

namespace zumat {
namespace {

enum Part : unsigned { kTaskId = 1, kYes = 2, kJson = 4, kTimeClauses = 8, kUntil = 16, kNow = 32 };

/// The parts of a command in addition to its action.
struct Shape {
  Action action;
  unsigned required;
  unsigned optional;
};

constexpr Shape kShapes[] = {
    {Action::kAdd, kTimeClauses, kTaskId},
    {Action::kEdit, kTaskId | kTimeClauses, 0},
    {Action::kDelete, kTaskId | kYes, 0},
    {Action::kActivate, kTaskId, 0},
    {Action::kDeactivate, kTaskId, 0},
    {Action::kList, 0, kJson},
    {Action::kRun, 0, kUntil | kNow},
    {Action::kStop, 0, 0},
    {Action::kHelp, 0, 0},
};

bool ReadNothing(const Word& word, std::string_view, Command&) { return word.text.find(':') == std::string_view::npos; }

bool ReadJson(const Word& word, std::string_view value, Command& command) {
  command.json = true;
  return ReadNothing(word, value, command);
}

bool ReadUntil(const Word&, std::string_view value, Command& command) {
  command.until = ReadNumber(value, 0, kMaximumDelay);
  return command.until.has_value();
}

/// DD/MM/YYYY-HH:MM
bool ReadNow(const Word&, std::string_view value, Command& command) {
  const Halves halves = SplitAt(value, '-');
  const auto day = ReadDay(halves.first);
  const auto minute = ReadTimeOfDay(halves.second.value_or(""));
  if (day && minute) command.now = *day + std::chrono::minutes(*minute);
  return command.now.has_value();
}

/// The number of the job within its task, of which there is one.
bool ReadZero(const Word&, std::string_view value, Command&) { return value == "0"; }

bool ReadTaskId(const Word&, std::string_view value, Command& command) {
  const auto id = ReadNumber(value, 1, 2147483647);
  command.taskId = id.value_or(0);
  return id.has_value();
}

/// PROGRAM:"TEXT"
bool ReadJob(const Word& word, std::string_view value, Command& command) {
  const Halves halves = SplitAt(value, ':');
  if (!IsProgram(halves.first) || halves.second != std::string_view() || !word.quoted) return false;
  command.program = halves.first;
  command.text = *word.quoted;
  return IsCommandText(command.text);
}

/// 0:PROGRAM:"TEXT"
bool ReadEditedJob(const Word& word, std::string_view value, Command& command) {
  const Halves halves = SplitAt(value, ':');
  return halves.first == "0" && halves.second && ReadJob(word, *halves.second, command);
}

struct Switch {
  std::string_view name;
  Action action;  // kNone for the part of a command
  unsigned part;
  bool takesQuoted;
  bool (*read)(const Word& word, std::string_view value, Command& command);
  const char* expected;
};

constexpr Switch kSwitches[] = {
    {"-TaskID", Action::kNone, kTaskId, false, ReadTaskId, "-TaskID:N, from 1 to 2147483647"},
    {"-YES", Action::kNone, kYes, false, ReadNothing, "-YES"},
    {"--json", Action::kNone, kJson, false, ReadJson, "--json"},
    {"-until", Action::kNone, kUntil, false, ReadUntil, "-until:SECONDS"},
    {"-now", Action::kNone, kNow, false, ReadNow, "-now:DD/MM/YYYY-HH:MM"},
    {"-addjob", Action::kAdd, 0, true, ReadJob, "-addjob:PROGRAM:\"MODULE ARGUMENTS\""},
    {"-editjob", Action::kEdit, 0, true, ReadEditedJob, "-editjob:0:PROGRAM:\"MODULE ARGUMENTS\""},
    {"-DeleteJob", Action::kDelete, 0, false, ReadNothing, "-DeleteJob"},
    {"-activate", Action::kActivate, 0, false, ReadZero, "-activate:0"},
    {"-deactivate", Action::kDeactivate, 0, false, ReadZero, "-deactivate:0"},
    {"-list", Action::kList, 0, false, ReadNothing, "-list"},
    {"-run", Action::kRun, 0, false, ReadNothing, "-run"},
    {"-stop", Action::kStop, 0, false, ReadNothing, "-stop"},
    {"-help", Action::kHelp, 0, false, ReadNothing, "-help"},
    {"--help", Action::kHelp, 0, false, ReadNothing, "--help"},
};

const Switch* FindSwitch(std::string_view name) noexcept {
  const auto found =
      std::ranges::find_if(kSwitches, [&](const Switch& candidate) { return text::SameName(name, candidate.name); });
  return found == std::end(kSwitches) ? nullptr : found;
}

Outcome TakeSwitch(const Word& word, Command& command, unsigned& parts) {
  const Halves halves = SplitAt(word.text, ':');
  const Switch* const known = FindSwitch(halves.first);
  if (!known)
    return {kUnknownSwitch, devkit::OneLine(std::string(word.text).c_str()) + " is no switch; -help lists them"};
  if (known->part & parts) return {kRepeated, std::string(known->name) + " is there twice"};
  if (known->action != Action::kNone && command.action != Action::kNone)
    return {known->action == command.action ? kRepeated : kClash, "the command has two actions"};
  if ((word.quoted && !known->takesQuoted) || !known->read(word, halves.second.value_or(""), command))
    return {kBadValue, devkit::OneLine(std::string(word.text).c_str()) + ": expected " + known->expected};
  if (known->action != Action::kNone) command.action = known->action;
  parts |= known->part;
  return {};
}

Outcome CheckShape(const Command& command, unsigned parts) {
  const auto shape = std::ranges::find(kShapes, command.action, &Shape::action);
  if (shape == std::end(kShapes)) return {kNoCommand, "the command has no action; -help lists the commands"};
  if (parts & ~(shape->required | shape->optional))
    return {kClash, "the switches do not go together; -help shows which do"};
  const unsigned missing = shape->required & ~parts;
  if (missing & kTaskId) return {kMissing, "-TaskID:N is missing"};
  if (missing & kYes) return {kMissing, "-YES is missing: a job is deleted only with it"};
  if (missing & kTimeClauses) return {kMissing, "no clause says when the job runs"};
  if (command.action == Action::kAdd && command.taskId == 0 && command.clauses.recurrence != Recurrence::kNextBoot)
    return {kMissing, "-TaskID:N is missing: only a job of the next boot needs none"};
  return {};
}

}  // namespace

const char kHelpText[] =
    "Keeps the jobs of the agent, and starts them.\n"
    "\n"
    "  zumat -TaskID:N -addjob:PROGRAM:\"MODULE ARGUMENTS\" CLAUSES     adds the job, or redefines it\n"
    "  zumat -TaskID:N -editjob:0:PROGRAM:\"MODULE ARGUMENTS\" CLAUSES  the same\n"
    "  zumat -addjob:PROGRAM:\"MODULE ARGUMENTS\" -Next:Boot:SECONDS    adds a job under an ID of its own\n"
    "  zumat -TaskID:N -activate:0         lets the job run\n"
    "  zumat -TaskID:N -deactivate:0       keeps the job from running\n"
    "  zumat -DeleteJob -TaskID:N -YES     deletes the job\n"
    "  zumat -list [--json]                shows the jobs\n"
    "  zumat -run [-until:SECONDS] [-now:DD/MM/YYYY-HH:MM]   stays and starts the jobs; until -stop, Ctrl+C or so "
    "long\n"
    "  zumat -stop                         ends the scheduler that runs\n"
    "  zumat -help                         shows this\n"
    "\n"
    "CLAUSES say when the job runs; one of these lines:\n"
    "  -Every:Weeks:N                      every N weeks\n"
    "  -Every:Days:N                       every N days\n"
    "  -Every:DAYS                         on days of the week: Su,M,T,W,Th,F,S or some of them\n"
    "  -EveryHoursMins:H:M [-Every:DAYS]   every H hours and M minutes on these days, or on all\n"
    "  -StartDay:DD/MM/YYYY -StartTime:HH:MM   once\n"
    "  -Every:Boot:SECONDS [-EveryWindow:Days:N]   after every boot, at most once in N days\n"
    "  -Next:Boot:SECONDS                  after the next boot only\n"
    "All but the boot clauses take also:\n"
    "  -StartTime:HH:MM                    the first start of the day; 00:00 without it\n"
    "  -StartTimeRnd:HH:MM                 the first start is picked at random between -StartTime and this\n"
    "  -StartDay:DD/MM/YYYY                the first day; without it, the day of the command\n"
    "\n"
    "The exit code is 0, or one that README.md explains.\n";

bool IsProgram(std::string_view text) noexcept {
  const auto isGood = [](char character) {
    const auto code = static_cast<unsigned char>(character);
    return code > 0x20 && code != 0x7F && character != ':' && character != '"';
  };
  return !text.empty() && text.size() <= kMaximumProgram && std::ranges::all_of(text, isGood);
}

bool IsCommandText(std::string_view text) noexcept {
  return text.size() <= kMaximumCommandText &&
         text.find_first_of(std::string_view("\"\0", 2)) == std::string_view::npos;
}

Outcome ReadCommand(std::string_view arguments, Command& command) {
  command = {};
  const auto words = SplitWords(arguments);
  if (!words) return {kBadQuotes, "a double quote is missing or out of place"};
  ClauseReader clauses;
  unsigned parts = 0;
  for (const Word& word : *words) {
    Outcome outcome;
    if (!clauses.Take(word, outcome)) outcome = TakeSwitch(word, command, parts);
    if (!outcome.Succeeded()) return outcome;
  }
  if (clauses.Any()) {
    parts |= kTimeClauses;
    if (Outcome outcome = clauses.Finish(command.clauses); !outcome.Succeeded()) return outcome;
  }
  return CheckShape(command, parts);
}

}  // namespace zumat
