// Which of the store's three files the library works with, told from what is in them, without asking it: a reading
// through its exports repairs.
#pragma once

#include <cstdint>
#include <string>

#include "store/ini_store.h"

namespace kelctl {

enum class CopyState {
  kMissing,
  kUnreadable,       // cannot be opened for update, as the library opens it, or not read to its end
  kCryptoNotLoaded,  // enciphered, and the crypto module cannot be used
  kNotDeciphered,    // the crypto module reported an error
  kRead,
};

/// One file of the store.
struct StoreCopy {
  std::string file;  // its name
  std::string path;
  CopyState state = CopyState::kMissing;
  unsigned long error = 0;  // the platform's, when the file is unreadable
  bool marked = false;      // enciphered
  std::uint64_t size = 0;   // bytes
  store::IniStore store;    // when it was read

  bool IsWhole() const { return state == CopyState::kRead && store.sections.size() >= store::kFewestSections; }
};

/// The three files.
struct StoreCopies {
  StoreCopy live, backup, start;
};

enum class CopyInUse { kNone, kLive, kBackup, kStart };

/// The file whose values the getters of the identity (agent identifier, customer, certificate) find next, and why.
struct StoreChoice {
  CopyInUse copy = CopyInUse::kNone;
  std::string why;  // a sentence
};

StoreChoice ChooseCopy(const StoreCopies& copies);

/// The file of the choice; null for kNone.
const StoreCopy* FileOf(const StoreCopies& copies, CopyInUse copy);

/// "live", "backup", "start" or "none".
const char* NameOf(CopyInUse copy);

/// What is in a file, in a few words: "4 sections, enciphered", "missing".
std::string Describe(const StoreCopy& copy);

}  // namespace kelctl
