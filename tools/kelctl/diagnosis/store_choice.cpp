#include "diagnosis/store_choice.h"

namespace kelctl {
namespace {

std::string SectionsOf(const StoreCopy& copy) {
  const std::size_t count = copy.store.sections.size();
  return std::to_string(count) + (count == 1 ? " section" : " sections");
}

// Why a file that the library reads first cannot be read at all.
StoreChoice Unusable(const StoreCopy& copy) { return {CopyInUse::kNone, copy.file + ": " + Describe(copy)}; }

// The store that was read first is damaged: the library repairs it from the start copy where there is one, and a getter
// that then finds no identity brings back the backup.
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
  const bool anything = file->state == CopyState::kRead && !file->store.sections.empty();
  return {anything ? first : CopyInUse::kNone, why + ", and no other copy is whole"};
}

}  // namespace

StoreChoice ChooseCopy(const StoreCopies& copies) {
  const StoreCopy &live = copies.live, &backup = copies.backup;
  if (live.state != CopyState::kMissing) {
    if (live.state != CopyState::kRead) return Unusable(live);
    if (live.IsWhole()) return {CopyInUse::kLive, live.file + " is whole"};
    return ChooseForDamaged(copies, CopyInUse::kLive, live.file + " is damaged (" + SectionsOf(live) + ")");
  }
  const std::string missing = live.file + " is missing";
  if (backup.state == CopyState::kMissing) {
    return ChooseForDamaged(copies, CopyInUse::kLive, missing + ", and so is " + backup.file);
  }
  if (backup.state != CopyState::kRead) return Unusable(backup);
  if (backup.IsWhole()) return {CopyInUse::kBackup, missing + ": " + backup.file + " is read in its place"};
  return ChooseForDamaged(copies, CopyInUse::kBackup,
                          missing + ", and " + backup.file + " is damaged (" + SectionsOf(backup) + ")");
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
      return "enciphered, and the crypto module cannot be loaded";
    case CopyState::kNotDeciphered:
      return "cannot be deciphered";
    case CopyState::kRead:
      break;
  }
  return SectionsOf(copy) + (copy.marked ? ", enciphered" : ", not enciphered");
}

}  // namespace kelctl
