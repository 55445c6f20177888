#include "store/ini_store.h"

#include <algorithm>

#include "frame/text.h"

namespace store {
namespace {

bool IsLineBreak(char c) noexcept { return c == '\r' || c == '\n'; }

// The first element whose `name` member matches; null when there is none.
template <typename Element>
Element* FindNamed(std::vector<Element>& elements, std::string Element::*name, std::string_view wanted) noexcept {
  const auto found =
      std::ranges::find_if(elements, [&](const Element& element) { return frame::SameName(element.*name, wanted); });
  return found == elements.end() ? nullptr : &*found;
}

void AppendWithoutLineBreaks(std::string& text, const std::string& part) {
  if (part.find_first_of("\r\n") == std::string::npos) {
    text += part;
  } else {
    std::ranges::remove_copy_if(part, std::back_inserter(text), IsLineBreak);
  }
}

std::size_t SerialisedLength(const IniStore& store) noexcept {
  std::size_t length = 0;
  for (const auto& section : store.sections) {
    length += section.name.size() + 4;
    for (const auto& entry : section.entries) length += entry.key.size() + entry.value.size() + 3;
  }
  return length;
}

void ParseLine(std::string_view line, IniStore& store) {
  if (line.front() == '[') {
    line.remove_prefix(1);
    store.sections.push_back({.name = std::string(line.substr(0, line.find(']'))), .entries = {}});
    return;
  }
  const auto separator = line.find('=');
  if (separator == std::string_view::npos || store.sections.empty()) return;
  store.sections.back().entries.push_back(
      {.key = std::string(line.substr(0, separator)), .value = std::string(line.substr(separator + 1))});
}

}  // namespace

IniSection* FindSection(IniStore& store, const char* name) noexcept {
  return name ? FindNamed(store.sections, &IniSection::name, name) : nullptr;
}

IniSection* AddSection(IniStore& store, const char* name) {
  if (name == nullptr) return nullptr;
  store.sections.push_back({.name = name, .entries = {}});
  return FindSection(store, name);
}

IniEntry* FindEntry(IniSection& section, const char* key) noexcept {
  return key ? FindNamed(section.entries, &IniEntry::key, key) : nullptr;
}

IniEntry* AddEntry(IniSection& section, const char* key, std::string_view value) {
  if (key == nullptr) return nullptr;
  section.entries.push_back({.key = key, .value = std::string(value)});
  return FindEntry(section, key);
}

IniEntry* LookupEntry(IniStore& store, const char* section, const char* key, bool create) {
  if (section == nullptr || key == nullptr) return nullptr;
  IniSection* found = FindSection(store, section);
  if (found == nullptr && create) found = &store.sections.emplace_back(IniSection{.name = section, .entries = {}});
  if (found == nullptr) return nullptr;
  IniEntry* entry = FindEntry(*found, key);
  return entry == nullptr && create ? AddEntry(*found, key) : entry;
}

std::string Serialise(const IniStore& store) {
  std::string text;
  text.reserve(SerialisedLength(store));
  for (const auto& section : store.sections) {
    text += '[';
    AppendWithoutLineBreaks(text, section.name);
    text += "]\r\n";
    for (const auto& entry : section.entries) {
      AppendWithoutLineBreaks(text, entry.key);
      text += '=';
      AppendWithoutLineBreaks(text, entry.value);
      text += "\r\n";
    }
  }
  return text;
}

void ParseIni(std::string_view text, IniStore& store) {
  auto position = text.begin();
  while ((position = std::find_if_not(position, text.end(), IsLineBreak)) != text.end()) {
    const auto end = std::find_if(position, text.end(), IsLineBreak);
    ParseLine({position, end}, store);
    position = end;
  }
}

}  // namespace store
