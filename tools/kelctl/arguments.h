// Checks and conversions of what the user typed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelctl {

/// The signed decimal number that is the whole of `text`. Throws UsageError for anything else and for a number beyond
/// 32 bits.
std::int32_t ParseNumber(std::string_view text);

/// Throws UsageError when `text` has a line break: a value is one line of its file, and the rest would be lost.
void CheckOneLine(std::string_view text);

/// True for "property:KEY", which names a free property, whatever KEY is.
bool IsPropertyName(std::string_view name);

/// The KEY of "property:KEY".
std::string PropertyKey(std::string_view name);

/// Throws UsageError when the store, or an INI file, would not find `key` again: it is empty, has a line break or "=",
/// or begins with "[".
void CheckPropertyKey(std::string_view key);

/// The longest path of Windows, in characters with the terminating zero.
inline constexpr unsigned kLongestPath = 32768;

/// The full path of a path that starts in the current directory. Both UTF-8.
std::string FullPath(const std::string& path);

}  // namespace kelctl
