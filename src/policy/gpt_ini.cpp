#include <compare>
#include <cstdint>
#include <utility>

#include "policy/ini_lines.h"
#include "policy/policy_texts.h"
#include "text/text.h"

namespace policy {

namespace {

using View = std::string_view;

#define SCRIPTS_EXTENSION "{42B5FAAE-6536-11D2-AE5A-0000F87571E3}"
#define SCRIPTS_TOOL "{40B6664F-4972-11D1-A7CA-0000F87571E3}"
#define EXTENSIONS_KEY "gPCMachineExtensionNames"
constexpr View kExtension = SCRIPTS_EXTENSION;
constexpr View kTool = SCRIPTS_TOOL;
constexpr View kGroup = "[" SCRIPTS_EXTENSION SCRIPTS_TOOL "]";

// The values of the section [General], as views into the text; without data for a missing line.
struct General {
  bool found = false;
  View version, extensions;
  std::size_t end = 0;  // where a line can be added: after the last line of the section that is not blank
};

std::size_t OffsetIn(View text, const char* position) { return static_cast<std::size_t>(position - text.data()); }

// Of equal sections and equal keys the first one counts, as for Windows.
General ReadGeneral(View text) {
  General general;
  bool inside = false;
  for (View rest = text; !rest.empty();) {
    const View line = TakeLine(rest);
    if (const auto name = SectionName(line)) {
      inside = !general.found && std::is_eq(CompareNames(*name, "General"));
      general.found = general.found || inside;
    }
    if (!inside || Trimmed(line).empty()) continue;
    general.end = OffsetIn(text, line.data() + line.size());
    const auto split = SplitLine(line);
    if (!split) continue;
    for (auto [key, value] : {std::pair{"Version", &general.version}, {EXTENSIONS_KEY, &general.extensions}})
      if (!value->data() && std::is_eq(CompareNames(split->key, key))) *value = ReadValue(split->value);
  }
  return general;
}

std::optional<std::uint32_t> NextVersion(View version) {
  const auto number = text::NumberFromText<std::uint32_t>(version.empty() ? "0" : version);
  if (!number) return std::nullopt;
  const std::uint32_t machine = (*number & 0xFFFF) == 0xFFFF ? 1 : (*number & 0xFFFF) + 1;
  return (*number & 0xFFFF0000) | machine;
}

// Removes "{...}" from the front of the list; empty when the list does not begin with an identifier.
View TakeIdentifier(View& list) {
  const View identifier = list.substr(0, kExtension.size());
  if (identifier.size() != kExtension.size() || identifier.front() != '{') return {};
  if (identifier.find_first_of("[]{}", 1) != identifier.size() - 1 || identifier.back() != '}') return {};
  list.remove_prefix(identifier.size());
  return identifier;
}

// A text to insert into the list; empty when the list is complete.
struct Insertion {
  std::size_t at = 0;
  View text;
};

// The insertion of the scripts extension into a list of groups "[{extension}{tool}...]", which are sorted by extension
// and inside by tool. None when the text is no such list.
std::optional<Insertion> PlaceInList(View list) {
  std::optional<Insertion> group, tool;
  bool listed = false;
  for (View rest = list; !rest.empty(); rest.remove_prefix(1)) {
    const std::size_t groupAt = list.size() - rest.size();
    if (rest.front() != '[') return std::nullopt;
    rest.remove_prefix(1);
    const View extension = TakeIdentifier(rest);
    if (extension.empty()) return std::nullopt;
    const auto order = CompareNames(extension, kExtension);
    if (std::is_gt(order) && !group) group = {groupAt, kGroup};
    while (!rest.empty() && rest.front() != ']') {
      const std::size_t toolAt = list.size() - rest.size();
      const View name = TakeIdentifier(rest);
      if (name.empty()) return std::nullopt;
      const auto toolOrder = CompareNames(name, kTool);
      listed = listed || (std::is_eq(order) && std::is_eq(toolOrder));
      if (std::is_eq(order) && !tool && std::is_gt(toolOrder)) tool = {toolAt, kTool};
    }
    if (rest.empty()) return std::nullopt;
    if (std::is_eq(order) && !tool) tool = {list.size() - rest.size(), kTool};
  }
  if (listed) return Insertion{};
  return tool ? tool : group ? group : Insertion{list.size(), kGroup};
}

// Replaces `old`, a view into the text, by `value`; adds a line when `old` has no data.
std::string WithValue(View text, const General& general, View old, const char* key, const std::string& value) {
  std::string changed(text);
  if (old.data()) return changed.replace(OffsetIn(text, old.data()), old.size(), value);
  const std::size_t at = general.found ? general.end : text.size();
  const bool lineBefore = at == 0 || text[at - 1] == '\n' || text[at - 1] == '\r';
  const std::string head = general.found ? "" : "[General]\r\n";
  return changed.insert(at, (lineBefore ? "" : "\r\n") + head + key + "=" + value + "\r\n");
}

std::optional<std::string> WithScriptsExtension(View text) {
  const General general = ReadGeneral(text);
  const auto insertion = PlaceInList(general.extensions);
  if (!insertion) return std::nullopt;
  std::string list(general.extensions);
  list.insert(insertion->at, insertion->text);
  return WithValue(text, general, general.extensions, EXTENSIONS_KEY, list);
}

}  // namespace

std::optional<std::string> StepMachineVersion(View text, ScriptsExtension extension) {
  if (text.size() > kLongestGptIni || HasControlCharacters(text)) return std::nullopt;
  const auto listed = extension == ScriptsExtension::kListed ? WithScriptsExtension(text) : std::string(text);
  if (!listed) return std::nullopt;
  const General general = ReadGeneral(*listed);
  const auto version = NextVersion(general.version);
  if (!version) return std::nullopt;
  return WithValue(*listed, general, general.version, "Version", std::to_string(*version));
}

bool ListsScriptsExtension(View text) {
  const auto insertion = PlaceInList(ReadGeneral(text).extensions);
  return insertion && insertion->text.empty();
}

std::string NewGptIni() {
  return "[General]\r\ngPCFunctionalityVersion=2\r\n" EXTENSIONS_KEY "=" + std::string(kGroup) + "\r\nVersion=1\r\n";
}

}  // namespace policy
