// Values of Windows profile (INI) files, by the file's full path: Windows looks for a relative one in its own folder.
// Results of Windows are returned unchanged.
//
// A call with a text of 32,767 characters or more, or with a file whose full path has MAX_PATH or more, fails with
// ERROR_INVALID_PARAMETER as the last-error value: Windows may crash on such texts.
#pragma once

#include <cstddef>
#include <string>

namespace win {

/// Writes a value, creating the file when it is missing; its folder must exist. A null `value` removes the key, a null
/// `key` the whole section. True on success; a failure leaves its reason in the last-error value.
bool WriteProfile(const std::string& file, const char* section, const char* key, const char* value) noexcept;

/// Stores the text of a value, cut at `size` - 1 characters; `fallback` when file, section or key is missing. Windows
/// removes one pair of quotes around a value. A null section or key stores the list of names that Windows makes then.
/// A call that fails stores the empty text. `size` is not 0; at most 1 MiB of it is used.
void ReadProfile(const char* file, const char* section, const char* key, const char* fallback, char* buffer,
                 std::size_t size) noexcept;

/// The same text as a string; with a null section or key the first name.
std::string ReadProfile(const std::string& file, const char* section, const char* key, const char* fallback,
                        std::size_t size);

/// The number at the beginning of a value, or 0; `fallback` when file, section or key is missing, and when the call
/// fails.
int ReadProfileNumber(const std::string& file, const char* section, const char* key, int fallback) noexcept;

}  // namespace win
