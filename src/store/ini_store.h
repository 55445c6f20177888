// The in-memory model of every store: ordered sections of ordered entries, and its text form.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace store {

/// The texts of a store stand in its `texts`: good as long as it lives, even when it is moved, until they are replaced.
struct IniEntry {
  std::string_view key;
  std::string_view value;
};

struct IniSection {
  std::string_view name;  // without brackets
  std::vector<IniEntry> entries;
};

/// Sections in the order in which they were added, which is the order in which they are written.
///
/// Names are compared without regard to ASCII letter case. Nothing prevents duplicates: adding always appends, looking
/// up always finds the first. A file that holds a section twice keeps both, of which only the first is ever found.
///
/// Pointers into a store are good until something is added to it. It can be moved, but not copied.
struct IniStore {
  std::vector<IniSection> sections;
  std::vector<std::unique_ptr<char[]>> texts;  // whole files, and names and values that were added or changed since
};

/// An integration store with fewer sections is taken as damaged.
inline constexpr std::size_t kFewestSections = 4;

/// The first section of that name; null when there is none or `name` is null.
IniSection* FindSection(IniStore& store, const char* name) noexcept;

/// Appends an empty section and returns the first one of its name, which is an older one if the name existed. A null
/// name adds nothing and gives null.
IniSection* AddSection(IniStore& store, const char* name);

/// The first entry of that key; null when there is none or `key` is null.
const IniEntry* FindEntry(const IniSection& section, const char* key) noexcept;

/// Appends an entry to a section of the store and returns the section's first one of its key. A null key adds nothing
/// and gives null.
const IniEntry* AddEntry(IniStore& store, IniSection& section, const char* key, std::string_view value = {});

/// The entry of `key` in the first section of that name. When `create` is set, a missing section is appended, and a
/// missing entry is appended to it with an empty value; else, or when a name is null, null.
const IniEntry* LookupEntry(IniStore& store, const char* section, const char* key, bool create);

/// The same without creating anything.
const IniEntry* LookupEntry(const IniStore& store, const char* section, const char* key) noexcept;

/// Gives the entry that `LookupEntry` finds or creates its value, which may be part of the old one, and frees what the
/// store kept for an older change of it. False, with nothing changed, when a name is null.
bool SetValue(IniStore& store, const char* section, const char* key, std::string_view value);

/// The text form: "[name]" and "key=value" lines that end in CR LF. CR and LF inside names and values are left out: a
/// line break has no place there, and would forge entries and sections.
std::string Serialise(const IniStore& store);

/// Appends the sections and entries of a text to the store, in time proportional to its length. The text is copied
/// once.
///
/// Lines end at any run of CR and LF. A line that begins with "[" is a section, named by what stands before the first
/// "]", or by the rest of the line. Another line belongs to the last section of the store and is split at its first
/// "="; without "=", or before any section, it is ignored. Blanks and ";" have no special meaning.
void ParseIni(std::string_view text, IniStore& store);

// The form in which the text of a store lies in its file: a marker and the enciphered text, or the text itself.

/// What an enciphered file begins with, in any letter case.
inline constexpr std::string_view kMarker = "TVKE";

/// Block size of the cipher, in bytes.
inline constexpr std::size_t kBlockSize = 16;

/// `length` rounded up to whole blocks.
constexpr std::size_t PaddedLength(std::size_t length) noexcept {
  return (length + kBlockSize - 1) / kBlockSize * kBlockSize;
}

/// The text before the first zero byte of `bytes`, or all of it.
std::string_view UpToZero(std::string_view bytes) noexcept;

/// True when the content of a file is enciphered: it begins with the marker, and is longer than that before its first
/// zero byte. (A file whose first enciphered byte is zero therefore counts as plain.)
bool IsMarked(std::string_view content) noexcept;

}  // namespace store
