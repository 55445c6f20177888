// Re-registration of the protection plug-ins that the installer recorded in the registry.
#pragma once

#include <cstddef>

#include "KELUtils.h"

namespace frame {

/// Below HKEY_LOCAL_MACHINE: a text value for each plug-in, the directory of its KERegister.dll.
inline constexpr char kProtectionsKey[] = "Software\\Tavrin Security\\Orvane\\Protections";
inline constexpr std::size_t kLongestProtection = 260;            // characters of a name; a longer one ends the listing
inline constexpr std::size_t kLongestProtectionDirectory = 4097;  // characters

/// Lets every plug-in under the product's Protections key register itself anew, in the order of the values. A plug-in
/// that cannot be is skipped. KE_SUCCESS; KE_REGISTRY_UNUSABLE when the key cannot be opened.
KE_RESULT ReRegisterPluginsFromRegistry();

/// The same for the plug-in recorded under one value: its text is the directory of the plug-in's KERegister.dll, which
/// is bound, called once and freed. Nothing happens when the value is missing, empty or no text, or the module
/// unusable.
void ReRegisterOnePluginFromRegistry(const char* valueName);

}  // namespace frame
