#include "store/ini_store.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "text/text.h"

namespace store {

namespace {

bool IsLineBreak(char c) noexcept { return c == '\r' || c == '\n'; }

// The first element whose `name` member matches, or null.
template <typename Elements, typename Name>
auto FindNamed(Elements& elements, Name name, std::string_view wanted) noexcept {
  const auto found =
      std::ranges::find_if(elements, [&](const auto& element) { return text::SameName(element.*name, wanted); });
  return found == elements.end() ? nullptr : &*found;
}

// Copies a text into the store.
std::string_view Keep(IniStore& store, std::string_view text) {
  return *store.texts.emplace_back(std::make_unique<const std::string>(text));
}

void AppendWithoutLineBreaks(std::string& text, std::string_view part) {
  std::ranges::remove_copy_if(part, std::back_inserter(text), IsLineBreak);
}

}  // namespace

const IniEntry* LookupEntry(const IniStore& store, const char* section, const char* key) noexcept {
  if (section == nullptr || key == nullptr) return nullptr;
  const IniSection* const found = FindNamed(store.sections, &IniSection::name, section);
  return found ? FindNamed(found->entries, &IniEntry::key, key) : nullptr;
}

IniEntry* LookupEntry(IniStore& store, const char* section, const char* key, bool create) {
  if (section == nullptr || key == nullptr) return nullptr;
  IniSection* const found = FindNamed(store.sections, &IniSection::name, section);
  IniEntry* const entry = found ? FindNamed(found->entries, &IniEntry::key, key) : nullptr;
  if (entry != nullptr || !create) return entry;
  const IniEntry added{Keep(store, key), {}};
  if (found) return &found->entries.emplace_back(added);
  // With its entry: without memory for both, neither is added.
  return &store.sections.emplace_back(IniSection{Keep(store, section), {added}}).entries.front();
}

bool SetValue(IniStore& store, const char* section, const char* key, std::string_view value) {
  if (section == nullptr || key == nullptr) return false;
  const std::string_view kept = Keep(store, value);
  const std::string_view old = std::exchange(LookupEntry(store, section, key, true)->value, kept);
  std::erase_if(store.texts, [&](const auto& text) { return text->data() == old.data(); });
  return true;
}

std::string Serialise(const IniStore& store) {
  std::size_t length = 0;  // about that of the result
  for (const auto& kept : store.texts) length += kept->size();
  std::string text;
  text.reserve(length);
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
  const std::string_view kept = Keep(store, text);
  for (auto next = kept.begin(); next != kept.end();) {
    const auto end = std::find_if(next, kept.end(), IsLineBreak);
    const std::string_view line(next, end);
    next = std::find_if_not(end, kept.end(), IsLineBreak);
    if (line.starts_with('[')) {
      store.sections.push_back({line.substr(1, line.find(']') - 1), {}});
    } else if (const auto split = line.find('='); split != line.npos && !store.sections.empty()) {
      store.sections.back().entries.push_back({line.substr(0, split), line.substr(split + 1)});
    }
  }
}

std::string_view UpToZero(std::string_view bytes) noexcept { return bytes.substr(0, bytes.find('\0')); }

bool IsMarked(std::string_view content) noexcept {
  return UpToZero(content).size() > kMarker.size() && text::SameName(content.substr(0, kMarker.size()), kMarker);
}

}  // namespace store
