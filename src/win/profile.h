// Values of Windows profile (INI) files, by the file's full path: the platform looks for a relative one in its own
// folder. What the platform answers is handed on unchanged.
#pragma once

#include <cstddef>
#include <string>

namespace win {

/// Writes a value, creating the file when it is missing; its folder must exist. A null `value` removes the key, a null
/// `key` the whole section. True on success; a failure leaves its reason in the last-error value.
bool WriteProfile(const std::string& file, const char* section, const char* key, const char* value) noexcept;

/// The text of a value, cut at `size` - 1 characters; `fallback` when file, section or key is missing. The platform
/// takes one pair of quotes around a value off.
std::string ReadProfile(const std::string& file, const char* section, const char* key, const char* fallback,
                        std::size_t size);

/// The number that a value begins with, 0 when it is none; `fallback` when file, section or key is missing.
int ReadProfileNumber(const std::string& file, const char* section, const char* key, int fallback) noexcept;

}  // namespace win
