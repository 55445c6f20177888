// Texts: what the user typed, encodings, and how text and JSON are printed. Texts of kelctl are UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace kelctl {

/// Characters that do not exist in the result's encoding become replacement characters.
std::string Utf8FromWide(std::wstring_view text);
std::wstring WideFromUtf8(std::string_view text);
std::string Utf8FromCodePage(std::string_view text);

/// Throws UsageError when a character does not exist in the code page.
std::string CodePageFromUtf8(std::string_view text);

/// The signed decimal number that is the whole of `text`. Throws UsageError for anything else and for a number outside
/// the range.
std::int64_t ParseNumber(std::string_view text, std::int64_t lowest = INT32_MIN, std::int64_t highest = INT32_MAX);

/// Throws UsageError when `text` has a line break: a value is one line of its file, and the rest would be lost.
void CheckOneLine(std::string_view text);

/// Throws UsageError when the store, or an INI file, would not find `key` again: it is empty, has a line break or "=",
/// or begins with "[".
void CheckPropertyKey(std::string_view key);

/// The longest path of Windows, in characters with the terminating zero.
inline constexpr unsigned kLongestPath = 32768;

/// The full path of a path that starts in the current directory. Both UTF-8.
std::string FullPath(const std::string& path);

/// The document with the members that every answer begins with: schemaVersion, generatedAt and host.
nlohmann::ordered_json Answer(const nlohmann::ordered_json& document);

/// The document as it is printed: indented, with a line end. Bytes that are not UTF-8 become replacement characters.
std::string DumpJson(const nlohmann::ordered_json& document);

/// The text with every control character as \xNN, for a line of a table.
std::string WithoutControlCharacters(const std::string& text);

/// The text with blanks behind it, at least `width` characters long.
std::string Padded(std::string text, std::size_t width);

/// A file time, in 100-nanosecond units since 1601, as yyyy-mm-ddThh:mm:ssZ.
std::string UtcTime(std::uint64_t time);

/// "1 section", "2 sections".
std::string Counted(std::size_t count, const std::string& noun);

}  // namespace kelctl
