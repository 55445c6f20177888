#include "store/ini_store.h"

#include <algorithm>
#include <iterator>

#include "text/text.h"

namespace store {

namespace {

// Bounds of the room that a section of a text gets at first.
constexpr std::size_t kFewEntries = 4, kManyEntries = 64;

bool IsLineBreak(char c) noexcept { return c == '\r' || c == '\n'; }

// The first element whose `name` member matches; null when there is none.
template <typename Elements, typename Name>
auto FindNamed(Elements& elements, Name name, std::string_view wanted) noexcept {
  const auto found =
      std::ranges::find_if(elements, [&](const auto& element) { return text::SameName(element.*name, wanted); });
  return found == elements.end() ? nullptr : &*found;
}

// Copies a text into the store.
std::string_view CopyText(IniStore& store, std::string_view text) {
  if (text.empty()) return {};
  auto& kept = store.texts.emplace_back(new char[text.size()]);
  text.copy(kept.get(), text.size());
  return {kept.get(), text.size()};
}

// Frees a text that is kept alone; one that is part of a file's text stays.
void FreeText(IniStore& store, std::string_view text) noexcept {
  if (text.empty()) return;
  std::erase_if(store.texts, [&](const auto& kept) { return kept.get() == text.data(); });
}

IniEntry* LookupOrCreate(IniStore& store, const char* section, const char* key, bool create) {
  if (section == nullptr || key == nullptr) return nullptr;
  IniSection* found = FindSection(store, section);
  if (found == nullptr && create) found = AddSection(store, section);
  if (found == nullptr) return nullptr;
  IniEntry* entry = FindNamed(found->entries, &IniEntry::key, key);
  return entry == nullptr && create ? &found->entries.emplace_back(IniEntry{CopyText(store, key), {}}) : entry;
}

void AppendWithoutLineBreaks(std::string& text, std::string_view part) {
  if (std::ranges::none_of(part, IsLineBreak)) {
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

// A text that the store keeps, read from its beginning.
class KeptText {
 public:
  explicit KeptText(std::string_view text) noexcept : at_(text.data()), end_(at_ + text.size()) {}

  bool SkipLineBreaks() noexcept {
    while (at_ != end_ && IsLineBreak(*at_)) ++at_;
    return at_ != end_;
  }

  // What stands in front of `mark`, or of the line's end when it comes first. Stops there.
  std::string_view Before(char mark) noexcept {
    const char* const from = at_;
    while (at_ != end_ && *at_ != mark && !IsLineBreak(*at_)) ++at_;
    return {from, at_};
  }

  std::string_view RestOfLine() noexcept { return Before('\n'); }

  // Steps over `mark` if it comes next.
  bool Take(char mark) noexcept {
    const bool comes = at_ != end_ && *at_ == mark;
    if (comes) ++at_;
    return comes;
  }

 private:
  const char* at_;
  const char* const end_;
};

// Appends a section. Those of a text resemble each other: it gets room for as many entries as the one before has, so
// that its list need not grow in small steps.
void AppendParsedSection(IniStore& store, std::string_view name) {
  const std::size_t before = store.sections.empty() ? 0 : store.sections.back().entries.size();
  store.sections.push_back({.name = name, .entries = {}});
  store.sections.back().entries.reserve(std::clamp(before, kFewEntries, kManyEntries));
}

}  // namespace

IniSection* FindSection(IniStore& store, const char* name) noexcept {
  return name ? FindNamed(store.sections, &IniSection::name, name) : nullptr;
}

IniSection* AddSection(IniStore& store, const char* name) {
  if (name == nullptr) return nullptr;
  store.sections.push_back({.name = CopyText(store, name), .entries = {}});
  return FindSection(store, name);
}

const IniEntry* FindEntry(const IniSection& section, const char* key) noexcept {
  return key ? FindNamed(section.entries, &IniEntry::key, key) : nullptr;
}

const IniEntry* AddEntry(IniStore& store, IniSection& section, const char* key, std::string_view value) {
  if (key == nullptr) return nullptr;
  const std::string_view keptKey = CopyText(store, key);
  section.entries.push_back({keptKey, CopyText(store, value)});
  return FindEntry(section, key);
}

const IniEntry* LookupEntry(IniStore& store, const char* section, const char* key, bool create) {
  return LookupOrCreate(store, section, key, create);
}

const IniEntry* LookupEntry(const IniStore& store, const char* section, const char* key) noexcept {
  const IniSection* const found = section ? FindNamed(store.sections, &IniSection::name, section) : nullptr;
  return found ? FindEntry(*found, key) : nullptr;
}

bool SetValue(IniStore& store, const char* section, const char* key, std::string_view value) {
  IniEntry* const entry = LookupOrCreate(store, section, key, true);
  if (entry == nullptr) return false;
  const std::string_view kept = CopyText(store, value);
  FreeText(store, entry->value);
  entry->value = kept;
  return true;
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
  KeptText rest(CopyText(store, text));
  while (rest.SkipLineBreaks()) {
    if (rest.Take('[')) {
      AppendParsedSection(store, rest.Before(']'));
      rest.RestOfLine();
      continue;
    }
    const std::string_view key = rest.Before('=');
    if (!rest.Take('=')) continue;
    const std::string_view value = rest.RestOfLine();
    if (!store.sections.empty()) store.sections.back().entries.push_back({key, value});
  }
}

std::string_view UpToZero(std::string_view bytes) noexcept { return bytes.substr(0, bytes.find('\0')); }

bool IsMarked(std::string_view content) noexcept {
  return UpToZero(content).size() > kMarker.size() && text::SameName(content.substr(0, kMarker.size()), kMarker);
}

}  // namespace store
