// Parses any bytes as a store, and compares the result with that of a simple parser. The written store must read as the
// same store, and a changed value must be found.
#include <algorithm>
#include <ranges>

#include "fuzzer.h"
#include "store/ini_store.h"
#include "text/text.h"

using namespace store;

namespace {

// The text form of the parsed text, by a simple parser, line by line.
std::string Expected(const std::string& text) {
  std::string written;
  for (std::size_t at = 0; (at = text.find_first_not_of("\r\n", at)) != text.npos;) {
    const std::size_t end = std::min(text.find_first_of("\r\n", at), text.size());
    const std::string line = text.substr(at, end - at);
    if (line[0] == '[') {
      written += "[" + line.substr(1, line.find(']') - 1) + "]\r\n";
    } else if (!written.empty() && line.find('=') != line.npos) {
      written += line + "\r\n";
    }
    at = end;
  }
  return written;
}

// An entry is found by its names; a name with a zero byte is looked up by the part before it. Limits keep the fuzzer
// quick.
void CheckLookups(const IniStore& store) {
  const auto hasZero = [](std::string_view name) { return name.find('\0') != name.npos; };
  for (const auto& section : store.sections | std::views::take(16)) {
    const auto same = [&](const auto& candidate) { return text::SameName(candidate.name, section.name); };
    if (hasZero(section.name) || &section != &*std::ranges::find_if(store.sections, same)) continue;
    for (const auto& entry : section.entries | std::views::take(16))
      Require(hasZero(entry.key) ||
              LookupEntry(store, std::string(section.name).c_str(), std::string(entry.key).c_str()) != nullptr);
  }
}

// Changes the first entry of each section twice, and a new one.
void Change(IniStore& store) {
  const std::size_t changed = std::min<std::size_t>(store.sections.size(), 8);
  for (std::size_t i = 0; i < changed; ++i) {
    const std::string name(store.sections[i].name);
    const std::string key(store.sections[i].entries.empty() ? "new" : store.sections[i].entries[0].key);
    const auto value = [&] { return LookupEntry(store, name.c_str(), key.c_str(), false)->value; };
    for (const std::string text : {"first", "", "the second, which is longer"})
      Require(SetValue(store, name.c_str(), key.c_str(), text) && value() == text);
    Require(SetValue(store, name.c_str(), key.c_str(), value().substr(4)) && value() == "second, which is longer");
  }
  // Each change frees the one before it: only the file's text, a value, and names with a zero byte remain.
  Require(store.texts.size() <= 1 + 3 * changed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  IniStore parsed;
  ParseIni(input, parsed);
  CheckLookups(parsed);
  const std::string text = Serialise(parsed);
  Require(text == Expected(input));
  IniStore again;
  ParseIni(text, again);
  Require(Serialise(again) == text);
  Change(again);
  CheckLookups(again);
  return 0;
}
