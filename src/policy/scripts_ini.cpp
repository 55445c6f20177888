#include "policy/scripts_ini.h"

#include <algorithm>
#include <map>

#include "policy/ini_lines.h"

namespace policy {

namespace {

bool IsPlain(std::wstring_view text, std::size_t longest) noexcept {
  const auto isControl = [](wchar_t c) { return c < L' ' || c == 0x7F; };
  return text.size() <= longest && std::ranges::none_of(text, isControl);
}

}  // namespace

bool FitsPolicy(const Script& script) noexcept {
  return IsPlain(script.program, kLongestProgram) && IsPlain(script.parameters, kLongestParameters);
}

bool Matches(const Script& script, const ScriptMatch& wanted) noexcept {
  return script.parameters == wanted.parameters && (wanted.program.empty() || script.program == wanted.program);
}

std::optional<std::uint32_t> EntryNumber(std::wstring_view text) noexcept {
  constexpr std::size_t kMostDigits = 9;
  if (text.empty() || text.size() > kMostDigits || (text.size() > 1 && text.front() == L'0')) return std::nullopt;
  std::uint32_t number = 0;
  for (const wchar_t digit : text) {
    if (digit < L'0' || digit > L'9') return std::nullopt;
    number = number * 10 + static_cast<std::uint32_t>(digit - L'0');
  }
  return number;
}

namespace {

constexpr std::wstring_view kProgramKey = L"CmdLine";
constexpr std::wstring_view kParametersKey = L"Parameters";
constexpr std::string_view kUtf16Mark = "\xFF\xFE";

// A line that belongs to a script.
struct Entry {
  std::uint32_t number;
  std::size_t digits;  // how many characters the number has, and where it begins in the line
  std::size_t digitsAt;
  bool isProgram;
  std::wstring_view value;
};

// The script of one number; each text as it is written, none when its line is missing.
struct Written {
  std::optional<std::wstring> program;
  std::optional<std::wstring> parameters;
};

using NumberedScripts = std::map<std::uint32_t, Written>;

std::optional<Entry> EntryOf(std::wstring_view line) {
  const auto split = SplitLine(line);
  if (!split) return std::nullopt;
  const std::size_t digits = std::min(split->key.find_first_not_of(L"0123456789"), split->key.size());
  const auto number = EntryNumber(split->key.substr(0, digits));
  const std::wstring_view name = split->key.substr(digits);
  const bool isProgram = SameName(name, kProgramKey);
  if (!number || (!isProgram && !SameName(name, kParametersKey))) return std::nullopt;
  return Entry{*number, digits, static_cast<std::size_t>(split->key.data() - line.data()), isProgram, split->value};
}

std::wstring_view AsRead(const std::optional<std::wstring>& written) {
  if (!written) return {};
  return WithoutQuotes(Trimmed(std::wstring_view(*written)));
}

// What must be written so that `value` is read.
std::wstring ToWrite(const std::wstring& value) {
  const std::optional<std::wstring> plain = value;
  return AsRead(plain) == value ? value : L"\"" + value + L"\"";
}

Script Read(const Written& written) {
  return {std::wstring(AsRead(written.program)), std::wstring(AsRead(written.parameters))};
}

bool IsComplete(const Written& written) { return !AsRead(written.program).empty(); }

bool IsWanted(const Written& written, const ScriptMatch& wanted) {
  const auto isText = [](const std::optional<std::wstring>& text, const std::wstring& expected) {
    return AsRead(text) == expected || text == expected;
  };
  return isText(written.parameters, wanted.parameters) &&
         (wanted.program.empty() || isText(written.program, wanted.program));
}

// A line that is there twice counts once, as for the platform: the first time.
NumberedScripts Collected(const ScriptsSection& section) {
  NumberedScripts scripts;
  for (const std::wstring& line : section.lines) {
    const auto entry = EntryOf(line);
    if (!entry) continue;
    Written& script = scripts[entry->number];
    auto& text = entry->isProgram ? script.program : script.parameters;
    if (!text) text = entry->value;
  }
  return scripts;
}

// Numbers the scripts anew without gaps, those without a program last, for nothing behind such a one would be read.
// Lines of other numbers are left out.
void Renumber(ScriptsSection& section, const NumberedScripts& scripts) {
  std::map<std::uint32_t, std::wstring> newNumbers;
  for (const bool complete : {true, false}) {
    for (const auto& [number, script] : scripts) {
      if (IsComplete(script) != complete) continue;
      const auto next = newNumbers.size();
      newNumbers[number] = std::to_wstring(next);
    }
  }
  std::erase_if(section.lines, [&](std::wstring& line) {
    const auto entry = EntryOf(line);
    if (!entry) return false;
    const auto found = newNumbers.find(entry->number);
    if (found == newNumbers.end()) return true;
    line.replace(entry->digitsAt, entry->digits, found->second);
    return false;
  });
}

auto FindSection(auto& sections, ScriptKind kind) {
  return std::ranges::find_if(sections, [&](const ScriptsSection& section) {
    const auto name = SectionName(std::wstring_view(section.head));
    return name && SameName(*name, std::wstring_view(NameOf(kind)));
  });
}

bool IsBlank(const std::wstring& line) { return Trimmed(std::wstring_view(line)).empty(); }

void EndLine(std::wstring& line) {
  if (!line.empty() && line.back() != L'\n' && line.back() != L'\r') line += L"\r\n";
}

ScriptsSection& SectionFor(ScriptsIni& ini, ScriptKind kind) {
  const auto found = FindSection(ini.sections, kind);
  if (found != ini.sections.end()) return *found;
  ScriptsSection& last = ini.sections.back();
  // The platform's editor leaves the first line of the file empty.
  if (ini.sections.size() == 1 && last.lines.empty()) last.lines.emplace_back(L"\r\n");
  EndLine(last.lines.empty() ? last.head : last.lines.back());
  return ini.sections.emplace_back(ScriptsSection{L"[" + std::wstring(NameOf(kind)) + L"]\r\n", {}});
}

}  // namespace

std::optional<ScriptsIni> ParseScriptsIni(std::wstring_view text) {
  if (text.size() > kLongestScriptsIni || HasControlCharacters(text)) return std::nullopt;
  ScriptsIni ini;
  while (!text.empty()) {
    const std::wstring_view line = TakeLine(text);
    if (const auto name = SectionName(line)) {
      for (const ScriptKind kind : kScriptKinds) {
        if (SameName(*name, std::wstring_view(NameOf(kind))) && FindSection(ini.sections, kind) != ini.sections.end())
          return std::nullopt;
      }
      ini.sections.push_back({std::wstring(line), {}});
    } else {
      ini.sections.back().lines.emplace_back(line);
    }
  }
  return ini;
}

std::wstring TextOf(const ScriptsIni& ini) {
  std::wstring text;
  for (const ScriptsSection& section : ini.sections) {
    text += section.head;
    for (const std::wstring& line : section.lines) text += line;
  }
  return text;
}

std::vector<Script> ScriptsOf(const ScriptsIni& ini, ScriptKind kind) {
  std::vector<Script> scripts;
  const auto section = FindSection(ini.sections, kind);
  if (section == ini.sections.end()) return scripts;
  for (const auto& [number, script] : Collected(*section)) {
    if (IsComplete(script)) scripts.push_back(Read(script));
  }
  return scripts;
}

void AddScript(ScriptsIni& ini, ScriptKind kind, const Script& script) {
  ScriptsSection& section = SectionFor(ini, kind);
  const NumberedScripts others = Collected(section);
  Renumber(section, others);
  const std::wstring number = std::to_wstring(others.size());
  EndLine(section.lines.empty() ? section.head : section.lines.back());
  const auto lastText = std::find_if_not(section.lines.rbegin(), section.lines.rend(), IsBlank);
  section.lines.insert(lastText.base(), {number + L"CmdLine=" + ToWrite(script.program) + L"\r\n",
                                         number + L"Parameters=" + ToWrite(script.parameters) + L"\r\n"});
  Renumber(section, Collected(section));  // what has no program stays behind the new one
}

std::vector<Script> TakeOutScripts(ScriptsIni& ini, ScriptKind kind, const ScriptMatch& wanted) {
  std::vector<Script> taken;
  const auto section = FindSection(ini.sections, kind);
  if (section == ini.sections.end()) return taken;
  NumberedScripts scripts = Collected(*section);
  std::erase_if(scripts, [&](const auto& numbered) {
    if (!IsWanted(numbered.second, wanted)) return false;
    taken.push_back(Read(numbered.second));
    return true;
  });
  if (taken.empty()) return taken;
  Renumber(*section, scripts);
  if (std::ranges::all_of(section->lines, IsBlank)) ini.sections.erase(section);
  return taken;
}

bool HasSections(const ScriptsIni& ini) noexcept { return ini.sections.size() > 1; }

std::optional<std::wstring> DecodeUtf16(std::string_view bytes) {
  if (!bytes.starts_with(kUtf16Mark) || bytes.size() % 2 != 0) return std::nullopt;
  std::wstring text;
  text.reserve(bytes.size() / 2);
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
  for (std::size_t at = kUtf16Mark.size(); at < bytes.size(); at += 2)
    text += static_cast<wchar_t>(byte(at) | byte(at + 1) << 8);
  return text;
}

std::string EncodeUtf16(std::wstring_view text) {
  std::string bytes(kUtf16Mark);
  bytes.reserve(bytes.size() + text.size() * 2);
  for (const wchar_t character : text) {
    bytes += static_cast<char>(character & 0xFF);
    bytes += static_cast<char>(character >> 8 & 0xFF);
  }
  return bytes;
}

}  // namespace policy
