// Plain profile (INI) files: KELUTILS.INI next to the library, and the module files of sibling components.
//
// `file` is a path when there is a backslash in it, else a file in the module directory; null or empty is KELUTILS.INI.
#pragma once

#include <string>

#include "KEResults.h"

namespace siblings {

/// The value of a key, cut at 4099 characters; empty when file or key is missing and when the module directory is
/// unknown.
std::string GetMyConfigIniValue(const char* section, const char* key, const char* file = nullptr);

/// Writes a value; a null value removes the key, a null key the section. Traces its start and end.
///
/// KE_SUCCESS, also when the write failed; KE_MISSING_ARGUMENT for a null section; KE_NOT_CREATED when the module
/// directory is unknown.
KE_RESULT SetMyConfigIniValue(const char* section, const char* key, const char* value, const char* file = nullptr);

/// Writes a value of the profile file at the full path `file`, as Windows does: a null value removes the key, a
/// null key the section. False, and traced under `function`, when that fails.
bool WriteProfileValue(const char* function, const std::string& file, const char* section, const char* key,
                       const char* value) noexcept;

}  // namespace siblings
