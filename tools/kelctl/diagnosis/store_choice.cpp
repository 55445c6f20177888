#include "diagnosis/store_choice.h"

#include <algorithm>
#include <string_view>

namespace kelctl {
namespace {

// True for text that no store holds: control characters.
bool HasNoise(std::string_view text) {
  return std::ranges::any_of(text, [](char c) { return (c >= 0 && c < ' ' && c != '\t') || c == 0x7f; });
}

std::string SectionsOf(const StoreCopy& copy) {
  const std::size_t count = copy.store.sections.size();
  const bool few = count < store::kFewestSections;
  return std::to_string(count) + (few ? " of " + std::to_string(store::kFewestSections) : "") +
         (count == 1 && !few ? " section" : " sections");
}

// Why a file that the library reads first cannot be read at all.
StoreChoice Unusable(const StoreCopy& copy) { return {CopyInUse::kNone, copy.file + ": " + Describe(copy)}; }

std::string StateOf(const StoreCopy& copy, const StoreCopies& copies) {
  if (IsNoise(copy)) return copy.file + " decrypts to noise";
  return copy.file + (IsIncomplete(copy, copies) ? " is incomplete (" : " is damaged (") + SectionsOf(copy) + ")";
}

// The store that was read first has too few sections: the library repairs it from the start copy if that exists, and a
// getter that then finds no identity restores the backup.
StoreChoice ChooseForDamaged(const StoreCopies& copies, CopyInUse first, const std::string& why) {
  const StoreCopy& start = copies.start;
  if (start.state == CopyState::kUnreadable) {
    return {CopyInUse::kNone, why + ", and " + start.file + " cannot be copied over it"};
  }
  if (start.IsWhole()) return {CopyInUse::kStart, why + ": the next reading copies " + start.file + " over it"};
  if (first != CopyInUse::kBackup && copies.backup.IsWhole()) {
    return {CopyInUse::kBackup, why + ": the next reading of the identity copies " + copies.backup.file + " over it"};
  }
  const StoreCopy* const file = FileOf(copies, first);
  const bool anything = file->state == CopyState::kRead && !file->store.sections.empty() && !IsNoise(*file);
  return {anything ? first : CopyInUse::kNone, why + ", and no other copy is complete"};
}

}  // namespace

StoreChoice ChooseCopy(const StoreCopies& copies) {
  const StoreCopy &live = copies.live, &backup = copies.backup;
  if (live.state != CopyState::kMissing) {
    if (live.state != CopyState::kRead) return Unusable(live);
    if (live.IsWhole()) return {CopyInUse::kLive, live.file + " is complete"};
    return ChooseForDamaged(copies, CopyInUse::kLive, StateOf(live, copies));
  }
  const std::string missing = live.file + " is missing";
  if (backup.state == CopyState::kMissing) {
    return ChooseForDamaged(copies, CopyInUse::kLive, missing + ", and so is " + backup.file);
  }
  if (backup.state != CopyState::kRead) return Unusable(backup);
  if (backup.IsWhole()) return {CopyInUse::kBackup, missing + ": " + backup.file + " is read in its place"};
  return ChooseForDamaged(copies, CopyInUse::kBackup, missing + ", and " + StateOf(backup, copies));
}

std::string StoreCopy::Value(const char* section, const char* key) const {
  const store::IniEntry* const entry = store::LookupEntry(store, section, key);
  return std::string(entry ? entry->value : std::string_view());
}

bool IsNoise(const StoreCopy& copy) {
  if (copy.state != CopyState::kRead || !copy.marked) return false;
  const auto& sections = copy.store.sections;
  return sections.empty() || std::ranges::any_of(sections, [](const store::IniSection& section) {
           return HasNoise(section.name) || std::ranges::any_of(section.entries, [](const store::IniEntry& entry) {
                    return HasNoise(entry.key) || HasNoise(entry.value);
                  });
         });
}

bool IsCut(const StoreCopy& copy) {
  const std::size_t text = store::Serialise(copy.store).size();
  if (!copy.marked) return text > copy.size;
  const std::uint64_t blocks = copy.size - std::min<std::uint64_t>(copy.size, store::kMarker.size());
  return blocks % store::kBlockSize != 0 || store::PaddedLength(text) > blocks;
}

bool IsIncomplete(const StoreCopy& copy, const StoreCopies& copies) {
  if (copy.state != CopyState::kRead || copy.IsWhole() || IsNoise(copy) || IsCut(copy)) return false;
  if (copy.store.sections.empty() && copy.size != 0) return false;
  return std::ranges::none_of(std::initializer_list<const StoreCopy*>{&copies.live, &copies.backup, &copies.start},
                              [&](const StoreCopy* other) {
                                return other->state == CopyState::kRead && !IsNoise(*other) &&
                                       other->store.sections.size() > copy.store.sections.size();
                              });
}

const StoreCopy* FileOf(const StoreCopies& copies, CopyInUse copy) {
  switch (copy) {
    case CopyInUse::kLive:
      return &copies.live;
    case CopyInUse::kBackup:
      return &copies.backup;
    case CopyInUse::kStart:
      return &copies.start;
    case CopyInUse::kNone:
      break;
  }
  return nullptr;
}

const char* NameOf(CopyInUse copy) {
  constexpr const char* kNames[] = {"none", "live", "backup", "start"};
  return kNames[static_cast<int>(copy)];
}

std::string Describe(const StoreCopy& copy) {
  switch (copy.state) {
    case CopyState::kMissing:
      return "missing";
    case CopyState::kUnreadable:
      return "cannot be opened or read (Windows error " + std::to_string(copy.error) + ")";
    case CopyState::kCryptoNotLoaded:
      return "encrypted, and the crypto module cannot be loaded";
    case CopyState::kNotDeciphered:
      return "the crypto module fails to decrypt it";
    case CopyState::kRead:
      break;
  }
  if (IsNoise(copy)) return "decrypts to noise: encrypted with other key blobs?";
  return SectionsOf(copy) + (copy.marked ? ", encrypted" : ", not encrypted");
}

}  // namespace kelctl
