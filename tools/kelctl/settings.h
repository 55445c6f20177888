// Single enciphered settings, through the library.
#pragma once

#include <string>

#include "library.h"

namespace kelctl {

/// The setting text, on one line, of a plain text. Throws UsageError for a text that is too long to be a setting,
/// LibraryError, CallError.
std::string EncryptSetting(Library& library, const std::string& plain);

/// The plain text of a setting text. Throws LibraryError, CallError.
std::string DecryptSetting(Library& library, const std::string& setting);

}  // namespace kelctl
