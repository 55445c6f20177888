// Builds the command lines of the scheduler and of the prompt program from any texts and numbers. Every text must stand
// in its line as it is; and the development versions of these programs must read what they accept as it was meant.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "agent/texts.h"
#include "kepires/prompt.h"
#include "schedule/commands.h"
#include "zumat/command.h"

namespace {

void Require(bool held) {
  if (!held) std::abort();
}

// Numbers and texts, taken from the front of the input.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  std::int32_t Number() {
    std::int32_t number = 0;
    std::memcpy(&number, rest_.data(), std::min(rest_.size(), sizeof number));
    rest_.erase(0, sizeof number);
    return number;
  }

  // Up to a zero byte.
  std::string Text() {
    const std::string text = rest_.substr(0, rest_.find('\0'));
    rest_.erase(0, text.size() + 1);
    return text;
  }

 private:
  std::string rest_;
};

int g_random = 0;
int Random() { return g_random; }

// What the scheduler reads in a command, whose first word is its name; it must understand it when `accepted`.
zumat::Command Read(const std::string& command, bool accepted) {
  Require(command.starts_with("zumat "));
  zumat::Command read;
  const bool understood = zumat::ReadCommand(command.substr(6), read).Succeeded();
  Require(understood || !accepted);
  return understood ? read : zumat::Command();
}

struct Texts {
  std::string program, module, arguments;
  std::int32_t taskId;

  schedule::Job Job() const { return {program.c_str(), module.c_str(), arguments.c_str(), taskId}; }
  std::string Text() const { return arguments.empty() ? module : module + " " + arguments; }
  bool Accepted() const { return zumat::IsProgram(program) && zumat::IsCommandText(Text()) && taskId > 0; }
};

zumat::Clauses CheckJob(const Texts& texts, const std::string& clauses, bool accepted) {
  const std::string quoted = texts.program + ":\"" + texts.Text() + "\"" + clauses;
  const std::string add = schedule::AddJobCommand(texts.Job(), clauses);
  const std::string edit = schedule::EditJobCommand(texts.Job(), clauses);
  Require(add == "zumat -TaskID:" + std::to_string(texts.taskId) + " -addjob:" + quoted);
  Require(edit == "zumat -TaskID:" + std::to_string(texts.taskId) + " -editjob:0:" + quoted);
  accepted = accepted && texts.Accepted();
  const zumat::Command added = Read(add, accepted), edited = Read(edit, accepted);
  if (!accepted) return {};
  Require(added.action == zumat::Action::kAdd && edited.action == zumat::Action::kEdit);
  for (const zumat::Command* const read : {&added, &edited}) {
    Require(read->program == texts.program && read->text == texts.Text() && read->taskId == texts.taskId);
    Require(read->clauses == added.clauses);
  }
  return added.clauses;
}

void CheckPeriod(const Texts& texts, std::int32_t period, bool randomWeekday) {
  const std::string every = " " + schedule::MkEveryClause(period, randomWeekday, Random);
  const zumat::Clauses read =
      CheckJob(texts, every + " " + schedule::MkStartTimeSpread(period, texts.taskId), period > 0);
  if (period <= 0 || !texts.Accepted()) return;
  const bool whole = read.recurrence == zumat::Recurrence::kWeekdays;
  Require(whole == (period < 24 * 60));
  Require(!whole || (read.interval == period && (randomWeekday || read.weekdays == zumat::kEveryWeekday)));
  Require(read.startTime == texts.taskId % 15 && read.startTimeEnd >= 29 && read.startTimeEnd < zumat::kMinutesOfDay);
}

void CheckRange(const Texts& texts, std::int32_t start, std::int32_t end) {
  const std::string range = schedule::MkStartTimeRange(start, end);
  Require(range.empty() == (start < 0 || end < start));
  const zumat::Clauses read = CheckJob(texts, " -Every:Days:1 " + range, !range.empty());
  if (range.empty() || !texts.Accepted()) return;
  Require(read.startTime >= 29 && read.startTime <= read.startTimeEnd && read.startTimeEnd < zumat::kMinutesOfDay);
}

void CheckBoot(const Texts& texts, std::int32_t delay, bool window) {
  const zumat::Clauses read = CheckJob(texts, schedule::MkBootClause(delay, window), delay >= 0);
  if (delay < 0 || !texts.Accepted()) return;
  Require(read.count == delay && read.windowDays == (window ? 7 : 0));
  const zumat::Command next = Read(schedule::NextBootCommand(texts.Text(), delay), true);
  Require(next.text == texts.Text() && next.clauses.count == delay && next.program == schedule::kPluginManager);
}

void CheckTask(std::int32_t id) {
  const zumat::Command deleted = Read(schedule::DeleteJobCommand(id), id > 0);
  const zumat::Command activated = Read(schedule::ActivateJobCommand(id), id > 0);
  const zumat::Command deactivated = Read(schedule::DeactivateJobCommand(id), id > 0);
  if (id <= 0) return;
  Require(deleted.action == zumat::Action::kDelete && deleted.taskId == id);
  Require(activated.action == zumat::Action::kActivate && activated.taskId == id);
  Require(deactivated.action == zumat::Action::kDeactivate && deactivated.taskId == id);
}

void CheckPrompts(const std::string& directory, std::int32_t kind, std::int32_t number) {
  Require(agent::PromptProgram(directory) == directory + "\\..\\KESAgent\\KePIRes.exe");
  kepires::Prompt prompt;
  Require(!kepires::ReadSwitches(agent::PromptSwitches(kind, number), prompt));
  Require(prompt.kind == kind && prompt.seconds == number);
  prompt = {};
  Require(!kepires::ReadSwitches(agent::PromptSwitches(kind), prompt));
  Require(prompt.kind == kind && !prompt.seconds);
  prompt = {};
  const auto message = static_cast<std::uint32_t>(number);
  Require(!kepires::ReadSwitches(agent::InstallDialogSwitches(message), prompt));
  Require(prompt.kind == agent::kInstallDialogPrompt && prompt.rebootMessage == message);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const std::int32_t first = input.Number(), second = input.Number();
  g_random = input.Number() & 0x7FFF;
  Texts texts{.program = {}, .module = {}, .arguments = {}, .taskId = input.Number()};
  texts.program = input.Text();
  texts.module = input.Text();
  texts.arguments = input.Text();
  switch (g_random % 3) {
    case 0:
      CheckPeriod(texts, first, second % 2 != 0);
      break;
    case 1:
      CheckRange(texts, first, second);
      break;
    default:
      CheckBoot(texts, first, second % 2 != 0);
      CheckTask(texts.taskId);
  }
  CheckPrompts(texts.module, first, second);
  const std::string day = schedule::FixedDayClauses(texts.module.c_str(), texts.arguments.c_str());
  Require(day == " -StartDay:" + texts.module + " -StartTime:" + texts.arguments);
  return 0;
}
