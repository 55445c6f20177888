// Which of the store's three files the library works with, determined from their content without the library: a
// reading through its exports repairs.
#pragma once

#include <cstdint>
#include <string>

#include "store/ini_store.h"

namespace kelctl {

enum class CopyState {
  kMissing,
  kUnreadable,       // cannot be opened, or not read to its end
  kCryptoNotLoaded,  // encrypted, and the crypto module cannot be used
  kNotDeciphered,    // the crypto module reported an error
  kRead,
};

/// One file of the store.
struct StoreCopy {
  std::string file;  // its name
  std::string path;
  CopyState state = CopyState::kMissing;
  unsigned long error = 0;    // of Windows, when the file is unreadable
  bool marked = false;        // encrypted
  std::uint64_t size = 0;     // bytes
  std::uint64_t written = 0;  // in the units of win::FileStatus
  bool readOnly = false;
  store::IniStore store;  // when it was read

  bool IsWhole() const { return state == CopyState::kRead && store.sections.size() >= store::kFewestSections; }

  /// A value of the store; empty when it is missing.
  std::string Value(const char* section, const char* key) const;
  std::string AgentId() const { return Value("AGENT", "ID"); }
};

/// True for an encrypted file whose decrypted content is not the text of a store: other key blobs, or damage.
bool IsNoise(const StoreCopy& copy);

/// True when the end of the text is missing: the file is shorter than the library writes it.
bool IsCut(const StoreCopy& copy);

/// The three files.
struct StoreCopies {
  StoreCopy live, backup, start;
};

enum class CopyInUse { kNone, kLive, kBackup, kStart };

/// The file whose values the getters of the identity (agent identifier, customer, certificate) read next, and why.
struct StoreChoice {
  CopyInUse copy = CopyInUse::kNone;
  std::string why;  // a sentence
};

StoreChoice ChooseCopy(const StoreCopies& copies);

/// The file of the choice; null for kNone.
const StoreCopy* FileOf(const StoreCopies& copies, CopyInUse copy);

/// "live", "backup", "start" or "none".
const char* NameOf(CopyInUse copy);

/// The content of a file in a few words: "4 sections, encrypted", "missing".
std::string Describe(const StoreCopy& copy);

/// True when the file has fewer sections than an installed agent's, and nothing is lost: it is not cut, and no other
/// copy holds more.
bool IsIncomplete(const StoreCopy& copy, const StoreCopies& copies);

}  // namespace kelctl
