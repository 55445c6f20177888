// The in-memory model of every store: ordered sections of ordered entries, and its text form.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace store {

struct IniEntry {
  std::string_view key;
  std::string_view value;
};

struct IniSection {
  std::string_view name;  // without brackets
  std::vector<IniEntry> entries;
};

/// Sections in the order in which they were added, which is the order in which they are written. Names are compared
/// without regard to ASCII letter case. Duplicates are kept, and lookups find the first: a file that holds a section
/// twice keeps both, of which only the first is ever found.
/// Can be moved, but not copied.
struct IniStore {
  std::vector<IniSection> sections;
  std::vector<std::unique_ptr<const std::string>> texts;  // own all names and values: texts of files, changed values
};

/// An integration store with fewer sections counts as damaged.
inline constexpr std::size_t kFewestSections = 4;

/// The first entry of `key` in the first section of that name, valid until the store changes; null when it is missing
/// or a name is null.
const IniEntry* LookupEntry(const IniStore& store, const char* section, const char* key) noexcept;

/// The same. When `create` is set, a missing section is appended to the store, and a missing entry to its section, with
/// an empty value; without memory for both, neither is.
IniEntry* LookupEntry(IniStore& store, const char* section, const char* key, bool create);

/// Changes the value of the entry that `LookupEntry` finds or creates; `value` may be part of the old one. Frees the
/// text of an older change. False, with nothing changed, when a name is null; nothing changes without memory either.
bool SetValue(IniStore& store, const char* section, const char* key, std::string_view value);

/// The text form: "[name]" and "key=value" lines that end in CR LF. CR and LF inside names and values are left out: a
/// line break has no place there, and would forge entries and sections.
std::string Serialise(const IniStore& store);

/// Appends the sections and entries of a text to the store, in time proportional to its length.
///
/// Lines end at any run of CR and LF. A line that begins with "[" is a section, named by the text before the first
/// "]", or by the rest of the line. Another line belongs to the last section of the store and is split at its first
/// "="; without "=", or before any section, it is ignored. Blanks and ";" have no special meaning.
void ParseIni(std::string_view text, IniStore& store);

// The content of a store's file: a marker and the encrypted text, or the text itself.

/// The beginning of an encrypted file, in any letter case.
inline constexpr std::string_view kMarker = "TVKE";

/// Block size of the cipher, in bytes.
inline constexpr std::size_t kBlockSize = 16;

/// `length` rounded up to whole blocks.
constexpr std::size_t PaddedLength(std::size_t length) noexcept {
  return (length + kBlockSize - 1) / kBlockSize * kBlockSize;
}

/// The text before the first zero byte of `bytes`, or all of it.
std::string_view UpToZero(std::string_view bytes) noexcept;

/// True when the content of a file is encrypted: it begins with the marker, and is longer than that before its first
/// zero byte. (A file whose first encrypted byte is zero therefore counts as plain.)
bool IsMarked(std::string_view content) noexcept;

}  // namespace store
