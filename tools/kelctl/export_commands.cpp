// Runs the commands of export_table.h: parses what the user typed, calls the export, prints what it filled in.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "diagnosis/redaction.h"
#include "export_table.h"
#include "texts.h"

namespace kelctl {
namespace {

/// What the user typed for the parameters of one command, by their position in the row.
struct Typed {
  std::map<std::size_t, std::string> texts;
  std::map<std::size_t, std::vector<std::string>> pairs;
  std::map<std::size_t, const CLI::Option*> options;
  bool reveal = false;

  bool Has(std::size_t index) const {
    const auto option = options.find(index);
    return option != options.end() && option->second->count() > 0;
  }
};

std::string NameOf(const Parameter& parameter) { return parameter.name; }

void CheckFolder(const std::string& path, bool folder) {
  const DWORD attributes = GetFileAttributesW(WideFromUtf8(path).c_str());
  const bool isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (attributes == INVALID_FILE_ATTRIBUTES || isFolder != folder) {
    throw UsageError((folder ? "no such folder: " : "no such file: ") + path);
  }
}

std::string Port(const std::string& text) { return text.empty() ? "80" : std::to_string(ParseNumber(text, 1, 65535)); }

void CheckHost(const std::string& text) {
  if (text.empty()) throw UsageError("the host is empty");
  if (text.find(':') != text.npos) throw UsageError("\"" + text + "\" is not a host alone; the port is the next word");
}

void CheckSection(const std::string& text) {
  if (text.empty() || text.find_first_of("[]") != text.npos) {
    throw UsageError("a section has a name, without \"[\" and \"]\"");
  }
}

// Minutes since midnight of "HH:MM".
std::int64_t MinuteOf(const std::string& time) {
  const auto digit = [&](std::size_t at) { return time[at] >= '0' && time[at] <= '9'; };
  if (time.size() != 5 || time[2] != ':' || !digit(0) || !digit(1) || !digit(3) || !digit(4)) {
    throw UsageError("\"" + time + "\" is not a time of day, HH:MM");
  }
  const std::int64_t hours = ParseNumber(time.substr(0, 2)), minutes = ParseNumber(time.substr(3));
  if (hours > 23 || minutes > 59) throw UsageError(time + " is out of range: 00:00 to 23:59");
  return hours * 60 + minutes;
}

std::int64_t PositionIn(std::string_view choices, const std::string& word) {
  std::int64_t position = 0;
  for (std::string_view rest = choices; !rest.empty(); ++position) {
    const std::size_t end = std::min(rest.find(' '), rest.size());
    if (rest.substr(0, end) == word) return position;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  throw UsageError("\"" + word + "\" is not one of: " + std::string(choices));
}

void CheckLength(const Parameter& parameter, const std::string& text) {
  if (parameter.longest == 0 || text.size() <= parameter.longest) return;
  throw UsageError(NameOf(parameter) + " may have " + std::to_string(parameter.longest) + " bytes");
}

// A password from standard input, which no list of processes shows. The line is UTF-8.
std::string LineOfInput() {
  std::string line;
  if (!std::getline(std::cin, line)) throw UsageError("standard input has no line for the password");
  if (line.ends_with('\r')) line.pop_back();
  return line;
}

std::string TextArgument(const Library& library, const Parameter& parameter, const std::string& typed) {
  std::string text = typed;
  if (parameter.kind == Kind::kPassword || parameter.kind == Kind::kSecret) {
    if (text == "-") text = LineOfInput();
    CheckLength(parameter, text);
    return parameter.kind == Kind::kSecret && !text.empty() ? EncryptSetting(library, text) : text;
  }
  CheckOneLine(text);
  if (parameter.kind == Kind::kKey) CheckPropertyKey(text);
  if (parameter.kind == Kind::kSection) CheckSection(text);
  if (parameter.kind == Kind::kHost) CheckHost(text);
  if (parameter.kind == Kind::kPort) text = Port(text);
  if (parameter.kind == Kind::kFile || parameter.kind == Kind::kFolder) {
    CheckFolder(text, parameter.kind == Kind::kFolder);
  }
  if (parameter.kind == Kind::kFolder || parameter.kind == Kind::kPath) text = FullPath(text);
  if (parameter.kind == Kind::kJobText && text.find('"') != text.npos) {
    throw UsageError("a job cannot have a double quote in it");  // it would end the scheduler's text early
  }
  text = CodePageFromUtf8(text);
  CheckLength(parameter, text);
  return text;
}

std::int64_t NumberArgument(const Parameter& parameter, const std::string& typed) {
  switch (parameter.kind) {
    case Kind::kMinute:
      return MinuteOf(typed);
    case Kind::kChoice:
      return PositionIn(parameter.choices, typed);
    case Kind::kUnsigned:
    case Kind::kPair:
      return ParseNumber(typed, 0, UINT32_MAX);
    default:
      return ParseNumber(typed);
  }
}

// The arguments of one parameter: mostly one.
void AddArguments(const Library& library, const Parameter& parameter, std::size_t index, const Typed& typed,
                  std::vector<Argument>& arguments) {
  switch (parameter.kind) {
    case Kind::kEnd:
    case Kind::kSwitch:
      return;
    case Kind::kFlag:
      return arguments.push_back({.number = typed.Has(index) ? 1 : 0});
    case Kind::kConstant:
      return arguments.push_back({.text = parameter.absent});
    case Kind::kProxySize:
      return arguments.push_back({.number = sizeof(KE_PROXY)});
    case Kind::kBuffer:  // its address, and its size
      return arguments.resize(arguments.size() + 2);
    case Kind::kZero:
    case Kind::kAnswer:
    case Kind::kNow:
    case Kind::kProxy:
      return arguments.push_back({});
    default:
      break;
  }
  const bool number = parameter.kind == Kind::kNumber || parameter.kind == Kind::kUnsigned ||
                      parameter.kind == Kind::kPair || parameter.kind == Kind::kMinute ||
                      parameter.kind == Kind::kChoice;
  if (!typed.Has(index)) {
    const char* const absent = parameter.absent;
    return arguments.push_back(
        {.null = absent == nullptr, .text = number || !absent ? "" : TextArgument(library, parameter, absent)});
  }
  if (parameter.kind == Kind::kPair) {
    for (const std::string& text : typed.pairs.at(index)) {
      arguments.push_back({.number = NumberArgument(parameter, text)});
    }
  } else if (number) {
    arguments.push_back({.number = NumberArgument(parameter, typed.texts.at(index))});
  } else {
    arguments.push_back({.text = TextArgument(library, parameter, typed.texts.at(index))});
  }
}

KE_TIME Now() {
  const std::time_t now = std::time(nullptr);
  const std::tm* const local = std::localtime(&now);
  return {local->tm_sec, local->tm_min, local->tm_hour, local->tm_mday, local->tm_mon, local->tm_year};
}

// True when the user chose the command's other export. Options of both exports together are an error.
bool OtherIsChosen(const ExportCommand& command, const Typed& typed) {
  const Parameter* selecting = nullptr;
  for (std::size_t i = 0; i < std::size(command.parameters); ++i) {
    const Parameter& parameter = command.parameters[i];
    if (parameter.selects && typed.Has(i)) selecting = &parameter;
    if (!parameter.needs || !typed.Has(i)) continue;
    const auto* const needed = std::ranges::find_if(command.parameters, [&](const Parameter& other) {
      return other.name && std::string_view(other.name) == parameter.needs;
    });
    if (!typed.Has(static_cast<std::size_t>(needed - command.parameters))) {
      throw UsageError(NameOf(parameter) + " requires " + parameter.needs);
    }
  }
  for (std::size_t i = 0; selecting && i < std::size(command.parameters); ++i) {
    const Parameter& parameter = command.parameters[i];
    if (parameter.use == For::kFirst && typed.Has(i)) {
      throw UsageError(NameOf(parameter) + " does not go with " + NameOf(*selecting));
    }
  }
  return selecting != nullptr;
}

template <std::size_t kSize>
std::string TextIn(const char (&field)[kSize]) {
  return {field, strnlen(field, kSize)};
}

// Host and port come in the code page; user and password, which were encrypted settings, in UTF-8.
void ShowProxy(const Session& session, const KE_PROXY& proxy, bool reveal) {
  const std::string host = Utf8FromCodePage(TextIn(proxy.host)), user = TextIn(proxy.user);
  const bool masked = !reveal && proxy.password[0] != '\0';  // an empty one hides nothing
  const std::string password = masked ? kMask : TextIn(proxy.password);
  std::string table;
  for (const auto& [name, text] : {std::pair{"host      ", host}, std::pair{"port      ", std::to_string(proxy.port)},
                                   std::pair{"user      ", user}, std::pair{"password  ", password}}) {
    table += name + (text.empty() ? "(empty)" : WithoutControlCharacters(text)) + "\n";
  }
  nlohmann::ordered_json object = {{"host", host},
                                   {"port", proxy.port},
                                   {"hasCredentials", proxy.hasCredentials != 0},
                                   {"user", user},
                                   {"password", password}};
  if (masked) object["masked"] = true;
  session.Show(table, object);
}

void ShowOutcome(Session& session, const ExportCommand& command, const CallData& data, const std::string& text,
                 bool reveal) {
  const std::size_t answer = std::min<std::size_t>(data.answer, std::size(command.words) - 1);
  switch (command.shows) {
    case Shows::kNothing:
      return;
    case Shows::kText:
      return session.Show(WithoutControlCharacters(text) + "\n", {{command.member, text}});
    case Shows::kYesOrNo:
      if (answer == 0) session.exitCode = kCallFailed;
      return session.Show(command.words[answer != 0] + std::string("\n"), {{command.member, answer != 0}});
    case Shows::kAnswer:
      return session.Show(command.words[answer] + std::string("\n"), {{command.member, data.answer}});
    case Shows::kProxy:
      return ShowProxy(session, data.proxy, reveal);
  }
}

void Run(Session& session, const ExportCommand& command, const Typed& typed) {
  const bool other = OtherIsChosen(command, typed);
  const ExportCall& call = other ? command.other : command.call;
  const auto library = session.OpenTheLibrary();
  CallData data{.now = Now()};
  for (std::size_t i = 0; i < std::size(command.parameters); ++i) {
    const Parameter& parameter = command.parameters[i];
    const bool used = parameter.use == For::kBoth || (parameter.use == For::kOther) == other;
    if (used) AddArguments(*library, parameter, i, typed, data.arguments);
  }
  const AnyFunction function = library->Find(call.name);
  std::string text;
  const KE_RESULT result = ReadText(
      [&](char* buffer, std::int32_t size) {
        data.buffer = buffer;
        data.size = size;
        return call.call(function, data);
      },
      text);
  const win::WipeAtEnd wipe(&data.proxy, sizeof data.proxy);
  if (call.yesOrNo) data.answer = result;
  if (!call.yesOrNo) ThrowUnlessSuccess(call.name, result);
  ShowOutcome(session, command, data, Utf8FromCodePage(text), typed.reveal);
}

void AddParameters(CLI::App& app, const ExportCommand& command, Typed& typed) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < std::size(command.parameters); ++i) {
    if (command.parameters[i].name) order.push_back(i);
  }
  std::ranges::stable_sort(order, {}, [&](std::size_t i) { return command.parameters[i].position; });
  for (const std::size_t i : order) {
    const Parameter& parameter = command.parameters[i];
    if (parameter.kind == Kind::kFlag || parameter.kind == Kind::kSwitch) {
      typed.options[i] = app.add_flag(parameter.name, parameter.help);
    } else if (parameter.kind == Kind::kPair) {
      typed.options[i] = app.add_option(parameter.name, typed.pairs[i], parameter.help)->expected(2)->type_name("N N");
    } else {
      CLI::Option* const option = app.add_option(parameter.name, typed.texts[i], parameter.help);
      option->required(!parameter.optional)->type_name(parameter.position == 0 ? "TEXT" : "");
      typed.options[i] = option;
    }
  }
  if (command.shows == Shows::kProxy) app.add_flag("--reveal", typed.reveal, "Show the password instead of ********");
}

// The command above `name`, and what is left of the name.
std::pair<CLI::App*, std::string> PlaceOf(CLI::App& kelctl, std::string name) {
  CLI::App* parent = &kelctl;
  for (auto blank = name.find(' '); blank != name.npos; blank = name.find(' ')) {
    parent = parent->get_subcommand(name.substr(0, blank));
    name.erase(0, blank + 1);
  }
  return {parent, name};
}

}  // namespace

void AddExportCommands(CLI::App& kelctl, Session& session) {
  for (const CommandGroup& group : CommandGroups()) {
    const auto [parent, name] = PlaceOf(kelctl, group.name);
    CLI::App* const command = parent->add_subcommand(name, group.help);
    command->require_subcommand(1);
    const auto first = std::ranges::find_if(ExportCommands(), [&](const ExportCommand& row) {
      return std::string_view(row.name).starts_with(std::string(group.name) + " ");
    });
    command->footer(std::string("Example: kelctl ") + first->example);
  }
  for (const ExportCommand& row : ExportCommands()) {
    const auto [parent, name] = PlaceOf(kelctl, row.name);
    CLI::App* const command = parent->add_subcommand(name, row.help);
    const auto typed = std::make_shared<Typed>();
    AddParameters(*command, row, *typed);
    command->footer(std::string(row.note) + "Example: kelctl " + row.example);
    command->callback([&session, &row, typed] { Run(session, row, *typed); });
  }
}

}  // namespace kelctl
