// The commands that are a call of one export: one row each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "export_call.h"

namespace kelctl {

/// What the user types for a parameter, and what the export gets. The letters are those of ExportCall::signature; for a
/// parameter without a name the user types nothing.
enum class Kind {
  kEnd,
  kText,       // t: one line
  kKey,        // t: a key of an INI file
  kSection,    // t: the name of a section of an INI file
  kJobText,    // t: one line without a double quote
  kHost,       // t: a host name or address without its port
  kPort,       // t: 1 to 65535
  kFile,       // t: an existing file
  kFolder,     // t: an existing folder, given as a full path
  kPath,       // t: a path, given as a full path
  kPassword,   // t: plain text; the export gets it in UTF-8
  kSecret,     // t: plain text; the export gets it encrypted as a setting, or the empty text
  kNumber,     // n
  kUnsigned,   // u, or n with the same bits
  kMinute,     // n: a time of day HH:MM, as minutes since midnight
  kChoice,     // n: one of the words of `choices`, as its position there
  kFlag,       // n: 1 when the flag is given
  kPair,       // uu: two numbers
  kSwitch,     // nothing: a flag that selects the other export
  kConstant,   // t: the text `absent`
  kZero,       // n or u: 0
  kBuffer,     // bn or bu: the buffer for a text
  kAnswer,     // a
  kNow,        // T: the present local time
  kProxy,      // p
  kProxySize,  // u
};

/// Which of a command's two exports a parameter is for.
enum class For { kBoth, kFirst, kOther };

/// A parameter of the export, in the order of its prototype.
struct Parameter {
  Kind kind = Kind::kEnd;
  const char* name = nullptr;  // "NAME" for an argument, "--name" for an option
  const char* help = "";
  int position = 0;  // of an argument on the command line, from 1
  bool optional = false;
  const char* absent = nullptr;  // what stands for an argument that is not given; null: a null pointer, or 0
  For use = For::kBoth;
  bool selects = false;           // when it is given, the other export is called
  std::size_t longest = 0;        // bytes in the code page; 0: any number
  const char* choices = nullptr;  // separated by blanks
  const char* needs = nullptr;    // the option without which this one makes no sense
};

/// What the command prints.
enum class Shows { kNothing, kText, kYesOrNo, kAnswer, kProxy };

struct ExportCommand {
  const char* name;  // with its group: "file get"
  const char* help;
  const char* example;  // what stands behind "kelctl"
  ExportCall call;
  ExportCall other = {};  // the export that an option selects
  Shows shows = Shows::kNothing;
  const char* member = nullptr;                   // of the JSON document
  const char* words[3] = {"no", "yes", nullptr};  // for an answer; after a "no" the exit code is 1
  Parameter parameters[10] = {};
  const char* note = "";  // in front of the example; ends in a line end
};

/// The letters that a parameter stands for.
constexpr std::string_view LettersOf(const Parameter& parameter) {
  switch (parameter.kind) {
    case Kind::kEnd:
    case Kind::kSwitch:
      return "";
    case Kind::kNumber:
    case Kind::kMinute:
    case Kind::kChoice:
      return "n";
    case Kind::kUnsigned:
    case Kind::kFlag:
    case Kind::kZero:
    case Kind::kProxySize:
      return "u";
    case Kind::kPair:
      return "uu";
    case Kind::kBuffer:
      return "bu";
    case Kind::kAnswer:
      return "a";
    case Kind::kNow:
      return "T";
    case Kind::kProxy:
      return "p";
    default:
      return "t";
  }
}

/// True when the parameters of the command are those of the prototype of its export. A number with a sign may not go
/// where the export takes one without.
constexpr bool Fits(const ExportCommand& command, const ExportCall& call, For other) {
  std::string_view signature = call.signature;
  for (const Parameter& parameter : command.parameters) {
    if (parameter.use == other) continue;
    for (const char letter : LettersOf(parameter)) {
      if (signature.empty()) return false;
      if (signature.front() != letter && !(letter == 'u' && signature.front() == 'n')) return false;
      signature.remove_prefix(1);
    }
  }
  return signature.empty();
}

/// A command that only has commands below it.
struct CommandGroup {
  const char* name;
  const char* help;
};

std::span<const ExportCommand> ExportCommands();
std::span<const CommandGroup> CommandGroups();

}  // namespace kelctl
