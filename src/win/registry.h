// Reading the registry.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace win {

/// The text value `name` of the key `path` below `root`, at most `limit` characters long; none when the key or the
/// value is missing, longer, or of another type than text.
std::optional<std::string> ReadTextValue(HKEY root, const char* path, const char* name, std::size_t limit);

/// The names of the key's values, in their order, up to the first one of more than `limit` characters; none when the
/// key cannot be opened. The unnamed default value is the empty name.
std::optional<std::vector<std::string>> ValueNames(HKEY root, const char* path, std::size_t limit);

/// True when the key can be opened to query its values.
bool CanOpenKey(HKEY root, const char* path) noexcept;

}  // namespace win
