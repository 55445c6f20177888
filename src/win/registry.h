// Reading the registry.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace win {

/// The text value `name` of the key `path` below `root`, at most `limit` characters long; none when the key or the
/// value is missing, longer, or of another type than text.
std::optional<std::string> ReadTextValue(HKEY root, const char* path, const char* name, std::size_t limit);

}  // namespace win
