// Checks and conversions of what the user typed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelctl {

/// The signed decimal number that is the whole of `text`. Throws UsageError for anything else and for a number beyond
/// 32 bits.
std::int32_t ParseNumber(std::string_view text);

/// Throws UsageError when `text` has a line break: the store keeps one line per value and would lose the rest.
void CheckOneLine(std::string_view text);

/// True for "property:KEY", which names a free property, whatever KEY is.
bool IsPropertyName(std::string_view name);

/// The KEY of "property:KEY".
std::string PropertyKey(std::string_view name);

/// Throws UsageError when the store would not find `key` again: it is empty, has a line break or "=", or begins with
/// "[".
void CheckPropertyKey(std::string_view key);

}  // namespace kelctl
