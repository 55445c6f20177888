#include <algorithm>
#include <compare>
#include <map>

#include "policy/ini_lines.h"
#include "policy/policy_texts.h"

namespace policy {

namespace {

using View = std::u16string_view;

constexpr std::string_view kUtf16Mark = "\xFF\xFE";

// A line of a script: its number, with the length and the place of the digits in the line, and its value as written.
struct Entry {
  std::uint32_t number;
  std::size_t digits, digitsAt;
  bool isProgram;
  View value;
};

// The lines of one number; none for a missing line.
struct Written {
  std::optional<std::u16string> program, parameters;
};

using NumberedScripts = std::map<std::uint32_t, Written>;

bool IsPlain(View text, std::size_t longest) noexcept {
  return text.size() <= longest && std::ranges::none_of(text, [](char16_t c) { return c < u' ' || c == 0x7F; });
}

bool IsBlank(View line) { return Trimmed(line).empty(); }

std::u16string Decimal(std::size_t number) {
  const std::string digits = std::to_string(number);
  return {digits.begin(), digits.end()};
}

std::optional<Entry> EntryOf(View line) {
  const auto split = SplitLine(line);
  if (!split) return std::nullopt;
  const std::size_t digits = std::min(split->key.find_first_not_of(u"0123456789"), split->key.size());
  const auto number = EntryNumber(split->key.substr(0, digits));
  const View name = split->key.substr(digits);
  const bool isProgram = std::is_eq(CompareNames(name, u"CmdLine"));
  if (!number || (!isProgram && std::is_neq(CompareNames(name, u"Parameters")))) return std::nullopt;
  return Entry{*number, digits, static_cast<std::size_t>(split->key.data() - line.data()), isProgram, split->value};
}

View AsRead(const std::optional<std::u16string>& written) { return written ? ReadValue(View(*written)) : View(); }

// The form in which `value` has to be written to be read unchanged.
std::u16string ToWrite(const std::u16string& value) {
  return ReadValue(View(value)) == value ? value : u"\"" + value + u"\"";
}

Script Read(const Written& written) {
  return {std::u16string(AsRead(written.program)), std::u16string(AsRead(written.parameters))};
}

bool IsWanted(const Written& written, const ScriptMatch& wanted) {
  const auto isText = [](const std::optional<std::u16string>& text, const std::u16string& expected) {
    return AsRead(text) == expected || text == expected;
  };
  return isText(written.parameters, wanted.parameters) &&
         (wanted.program.empty() || isText(written.program, wanted.program));
}

// Of two equal lines the first one counts, as for Windows.
NumberedScripts Collected(const ScriptsSection& section) {
  NumberedScripts scripts;
  for (const auto& line : section.lines) {
    const auto entry = EntryOf(line);
    if (!entry) continue;
    Written& script = scripts[entry->number];
    auto& text = entry->isProgram ? script.program : script.parameters;
    if (!text) text = entry->value;
  }
  return scripts;
}

// Numbers the scripts without gaps, those without a program last: Windows reads nothing after them. Removes the lines
// of other numbers.
void Renumber(ScriptsSection& section, const NumberedScripts& scripts) {
  std::map<std::uint32_t, std::u16string> newNumbers;
  for (const bool complete : {true, false}) {
    for (const auto& [number, script] : scripts) {
      const auto next = newNumbers.size();
      if (AsRead(script.program).empty() != complete) newNumbers[number] = Decimal(next);
    }
  }
  std::erase_if(section.lines, [&](std::u16string& line) {
    const auto entry = EntryOf(line);
    if (!entry) return false;
    const auto found = newNumbers.find(entry->number);
    if (found == newNumbers.end()) return true;
    line.replace(entry->digitsAt, entry->digits, found->second);
    return false;
  });
}

bool IsOfKind(const ScriptsSection& section, ScriptKind kind) {
  const auto name = SectionName(View(section.head));
  return name && std::is_eq(CompareNames(*name, NameOf(kind)));
}

auto FindSection(auto& sections, ScriptKind kind) {
  return std::ranges::find_if(sections, [&](const ScriptsSection& section) { return IsOfKind(section, kind); });
}

// Ends the last line of the section.
void EndLine(ScriptsSection& section) {
  std::u16string& line = section.lines.empty() ? section.head : section.lines.back();
  if (!line.empty() && line.back() != u'\n' && line.back() != u'\r') line += u"\r\n";
}

ScriptsSection& SectionFor(ScriptsIni& ini, ScriptKind kind) {
  const auto found = FindSection(ini.sections, kind);
  if (found != ini.sections.end()) return *found;
  ScriptsSection& last = ini.sections.back();
  // The policy editor of Windows leaves the first line of the file empty.
  if (ini.sections.size() == 1 && last.lines.empty()) last.lines.emplace_back(u"\r\n");
  EndLine(last);
  return ini.sections.emplace_back(ScriptsSection{std::u16string(u"[").append(NameOf(kind)) + u"]\r\n", {}});
}

}  // namespace

bool FitsPolicy(const Script& script) noexcept {
  return IsPlain(script.program, kLongestProgram) && IsPlain(script.parameters, kLongestParameters);
}

bool Matches(const Script& script, const ScriptMatch& wanted) noexcept {
  return script.parameters == wanted.parameters && (wanted.program.empty() || script.program == wanted.program);
}

std::optional<std::uint32_t> EntryNumber(View text) noexcept {
  constexpr std::size_t kMostDigits = 9;
  if (text.empty() || text.size() > kMostDigits || (text.size() > 1 && text.front() == u'0')) return std::nullopt;
  std::uint32_t number = 0;
  for (const char16_t digit : text) {
    if (digit < u'0' || digit > u'9') return std::nullopt;
    number = number * 10 + static_cast<std::uint32_t>(digit - u'0');
  }
  return number;
}

std::optional<ScriptsIni> ParseScriptsIni(View text) {
  if (text.size() > kLongestScriptsIni || HasControlCharacters(text)) return std::nullopt;
  ScriptsIni ini;
  while (!text.empty()) {
    const View line = TakeLine(text);
    if (SectionName(line))
      ini.sections.push_back({std::u16string(line), {}});
    else
      ini.sections.back().lines.emplace_back(line);
  }
  const bool twice = std::ranges::any_of(kScriptKinds, [&](ScriptKind kind) {
    return std::ranges::count_if(ini.sections, [&](const auto& section) { return IsOfKind(section, kind); }) > 1;
  });
  return twice ? std::nullopt : std::optional(std::move(ini));
}

std::u16string TextOf(const ScriptsIni& ini) {
  std::u16string text;
  for (const ScriptsSection& section : ini.sections) {
    text += section.head;
    for (const auto& line : section.lines) text += line;
  }
  return text;
}

std::vector<Script> ScriptsOf(const ScriptsIni& ini, ScriptKind kind) {
  std::vector<Script> scripts;
  const auto section = FindSection(ini.sections, kind);
  if (section == ini.sections.end()) return scripts;
  for (const auto& [number, script] : Collected(*section)) {
    if (!AsRead(script.program).empty()) scripts.push_back(Read(script));
  }
  return scripts;
}

void AddScript(ScriptsIni& ini, ScriptKind kind, const Script& script) {
  ScriptsSection& section = SectionFor(ini, kind);
  const NumberedScripts others = Collected(section);
  Renumber(section, others);
  const std::u16string number = Decimal(others.size());
  EndLine(section);
  const auto lastText = std::find_if_not(section.lines.rbegin(), section.lines.rend(), IsBlank);
  section.lines.insert(lastText.base(), {number + u"CmdLine=" + ToWrite(script.program) + u"\r\n",
                                         number + u"Parameters=" + ToWrite(script.parameters) + u"\r\n"});
  Renumber(section, Collected(section));  // entries without a program stay after the new script
}

std::vector<Script> RemoveMatching(ScriptsIni& ini, ScriptKind kind, const ScriptMatch& wanted) {
  std::vector<Script> removed;
  const auto section = FindSection(ini.sections, kind);
  if (section == ini.sections.end()) return removed;
  NumberedScripts scripts = Collected(*section);
  std::erase_if(scripts, [&](const auto& numbered) {
    if (!IsWanted(numbered.second, wanted)) return false;
    removed.push_back(Read(numbered.second));
    return true;
  });
  if (removed.empty()) return removed;
  Renumber(*section, scripts);
  if (std::ranges::all_of(section->lines, IsBlank)) ini.sections.erase(section);
  return removed;
}

bool HasSections(const ScriptsIni& ini) noexcept { return ini.sections.size() > 1; }

std::optional<std::u16string> DecodeUtf16(std::string_view bytes) {
  if (!bytes.starts_with(kUtf16Mark) || bytes.size() % 2 != 0) return std::nullopt;
  std::u16string text;
  text.reserve(bytes.size() / 2);
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
  for (std::size_t at = kUtf16Mark.size(); at < bytes.size(); at += 2)
    text += static_cast<char16_t>(byte(at) | byte(at + 1) << 8);
  return text;
}

std::string EncodeUtf16(View text) {
  std::string bytes(kUtf16Mark);
  bytes.reserve(bytes.size() + text.size() * 2);
  for (const char16_t character : text) {
    bytes += static_cast<char>(character & 0xFF);
    bytes += static_cast<char>(character >> 8 & 0xFF);
  }
  return bytes;
}

}  // namespace policy
