// Re-registration of the protection plug-ins that the installer recorded in the registry.
#pragma once

#include <cstddef>
#include <string>

#include "KELUtils.h"

namespace frame {

/// Below HKEY_LOCAL_MACHINE: a text value for each plug-in, the directory of its KERegister.dll.
inline constexpr char kProtectionsKey[] = "Software\\Tavrin Security\\Orvane\\Protections";
inline constexpr std::size_t kLongestProtection = 260;            // characters of a name; a longer one ends the listing
inline constexpr std::size_t kLongestProtectionDirectory = 4097;  // characters

/// A recorded directory with a separator at its end.
std::string PluginFolder(std::string directory);

/// Lets every plug-in under the product's Protections key register itself anew, in the order of the values. A plug-in
/// that cannot be is skipped. KE_SUCCESS; KE_REGISTRY_UNUSABLE when the key cannot be opened.
KE_RESULT ReRegisterPluginsFromRegistry();

/// The same for the plug-in recorded under one value: its text is the directory of the plug-in's KERegister.dll, a full
/// path, which is bound, called once and freed. When the value is missing or no text, the directory no full path, or
/// the module unusable, nothing happens but a line in the trace.
void ReRegisterOnePluginFromRegistry(const char* valueName);

}  // namespace frame
