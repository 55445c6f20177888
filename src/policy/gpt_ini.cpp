#include "policy/gpt_ini.h"

#include <cstdint>

#include "policy/ini_lines.h"

namespace policy {

namespace {

#define SCRIPTS_EXTENSION "{42B5FAAE-6536-11D2-AE5A-0000F87571E3}"
#define SCRIPTS_TOOL "{40B6664F-4972-11D1-A7CA-0000F87571E3}"
#define EXTENSIONS_KEY "gPCMachineExtensionNames"
constexpr std::string_view kExtension = SCRIPTS_EXTENSION;
constexpr std::string_view kTool = SCRIPTS_TOOL;
constexpr std::string_view kGroup = "[" SCRIPTS_EXTENSION SCRIPTS_TOOL "]";
constexpr std::string_view kVersionKey = "Version";
constexpr std::string_view kExtensionsKey = EXTENSIONS_KEY;

// What the section [General] says. The views point into the text.
struct General {
  bool found = false;
  std::string_view version;     // without blanks and quotation marks; no data when there is no such line
  std::string_view extensions;  // the same
  std::size_t end = 0;          // where a line can be added: behind the last one of the section that is not blank
};

std::size_t OffsetIn(std::string_view text, const char* place) { return static_cast<std::size_t>(place - text.data()); }

// As for the platform, the first section of the name counts, and the first line of a key.
General ReadGeneral(std::string_view text) {
  General general;
  bool inside = false;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view line = TakeLine(rest);
    if (const auto name = SectionName(line)) {
      inside = !general.found && SameName(*name, std::string_view("General"));
      general.found = general.found || inside;
    }
    if (!inside || Trimmed(line).empty()) continue;
    general.end = OffsetIn(text, line.data() + line.size());
    const auto split = SplitLine(line);
    if (!split) continue;
    for (auto [key, value] : {std::pair{kVersionKey, &general.version}, {kExtensionsKey, &general.extensions}})
      if (!value->data() && SameName(split->key, key)) *value = WithoutQuotes(Trimmed(split->value));
  }
  return general;
}

std::optional<std::uint32_t> NextVersion(std::string_view version) {
  const auto number = text::NumberFromText<std::uint32_t>(version.empty() ? "0" : version);
  if (!number) return std::nullopt;
  const std::uint32_t machine = (*number & 0xFFFF) == 0xFFFF ? 1 : (*number & 0xFFFF) + 1;
  return (*number & 0xFFFF0000) | machine;
}

// A text to be put into the list, and where; an empty one when the list already has what is wanted.
struct Insertion {
  std::size_t at = 0;
  std::string_view text;
};

// Takes "{...}" off the list; empty when the list does not begin with an identifier.
std::string_view TakeIdentifier(std::string_view& list) {
  const std::string_view identifier = list.substr(0, kExtension.size());
  if (identifier.size() != kExtension.size() || identifier.front() != '{') return {};
  if (identifier.find_first_of("[]{}", 1) != identifier.size() - 1 || identifier.back() != '}') return {};
  list.remove_prefix(identifier.size());
  return identifier;
}

int Compare(std::string_view left, std::string_view right) {
  for (std::size_t i = 0; i < left.size(); ++i) {
    const char one = text::LowerAscii(left[i]), other = text::LowerAscii(right[i]);
    if (one != other) return one < other ? -1 : 1;
  }
  return 0;
}

// Where the scripts extension belongs in a list of groups "[{extension}{tool}...]", which are sorted by extension and
// inside by tool. None when the text is no such list.
std::optional<Insertion> PlaceInList(std::string_view list) {
  std::optional<Insertion> group, tool;
  bool listed = false;
  for (std::string_view rest = list; !rest.empty();) {
    const std::size_t groupAt = list.size() - rest.size();
    if (rest.front() != '[') return std::nullopt;
    rest.remove_prefix(1);
    const std::string_view extension = TakeIdentifier(rest);
    if (extension.empty()) return std::nullopt;
    const int order = Compare(extension, kExtension);
    if (order > 0 && !group) group = {groupAt, kGroup};
    while (!rest.empty() && rest.front() != ']') {
      const std::size_t toolAt = list.size() - rest.size();
      const std::string_view name = TakeIdentifier(rest);
      if (name.empty()) return std::nullopt;
      listed = listed || (order == 0 && Compare(name, kTool) == 0);
      if (order == 0 && !tool && Compare(name, kTool) > 0) tool = {toolAt, kTool};
    }
    if (rest.empty()) return std::nullopt;
    if (order == 0 && !tool) tool = {list.size() - rest.size(), kTool};
    rest.remove_prefix(1);
  }
  if (listed) return Insertion{};
  return tool ? tool : group ? group : Insertion{list.size(), kGroup};
}

// Puts `value` in place of `old`, a piece of the text, or adds a line with it when there is none.
std::string WithValue(std::string_view text, const General& general, std::string_view old, const std::string& key,
                      const std::string& value) {
  std::string changed(text);
  if (old.data()) return changed.replace(OffsetIn(text, old.data()), old.size(), value);
  const std::size_t at = general.found ? general.end : text.size();
  const bool lineBefore = at == 0 || text[at - 1] == '\n' || text[at - 1] == '\r';
  const std::string head = general.found ? "" : "[General]\r\n";
  return changed.insert(at, (lineBefore ? "" : "\r\n") + head + key + "=" + value + "\r\n");
}

std::optional<std::string> WithNextVersion(std::string_view text) {
  const General general = ReadGeneral(text);
  const auto version = NextVersion(general.version);
  if (!version) return std::nullopt;
  return WithValue(text, general, general.version, "Version", std::to_string(*version));
}

std::optional<std::string> WithScriptsExtension(std::string_view text) {
  const General general = ReadGeneral(text);
  const auto place = PlaceInList(general.extensions);
  if (!place) return std::nullopt;
  std::string list(general.extensions);
  list.insert(place->at, place->text);
  return WithValue(text, general, general.extensions, EXTENSIONS_KEY, list);
}

}  // namespace

std::optional<std::string> StepMachineVersion(std::string_view text, ScriptsExtension extension) {
  if (text.size() > kLongestGptIni || HasControlCharacters(text)) return std::nullopt;
  if (extension == ScriptsExtension::kAsItIs) return WithNextVersion(text);
  const auto listed = WithScriptsExtension(text);
  return listed ? WithNextVersion(*listed) : std::nullopt;
}

bool ListsScriptsExtension(std::string_view text) {
  const auto place = PlaceInList(ReadGeneral(text).extensions);
  return place && place->text.empty();
}

std::string NewGptIni() {
  return "[General]\r\ngPCFunctionalityVersion=2\r\n" EXTENSIONS_KEY "=" + std::string(kGroup) + "\r\nVersion=1\r\n";
}

}  // namespace policy
