// The commands of this program.
#pragma once

#include <string>
#include <string_view>

#include "zumat/clauses.h"
#include "zumat/results.h"

namespace zumat {

enum class Action { kNone, kAdd, kEdit, kDelete, kActivate, kDeactivate, kList, kRun, kStop, kHelp };

struct Command {
  Action action = Action::kNone;
  int taskId = 0;       // 0: none was given
  std::string program;  // kAdd and kEdit: this, the text and the clauses
  std::string text;     // the quoted part
  Clauses clauses;
  bool json = false;          // kList
  std::optional<int> until;   // kRun: seconds after which it ends
  std::optional<Minute> now;  // kRun: the time that its clock shows at the start
};

/// Reads a command line without the program's name. Unless it succeeds, `command` is not to be used.
Outcome ReadCommand(std::string_view arguments, Command& command);

/// The output of -help.
extern const char kHelpText[];

/// True for a text that may name a program: 1 to kMaximumProgram characters, none of them a blank, a control character,
/// a colon or a double quote.
bool IsProgram(std::string_view text) noexcept;

/// True for a text that may be a job's command: at most kMaximumCommandText bytes, none of them a double quote.
bool IsCommandText(std::string_view text) noexcept;

}  // namespace zumat
