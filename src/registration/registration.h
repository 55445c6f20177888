// The registrations of the agent: token files and host modules below the installation folder, and plug-ins.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "KEResults.h"

namespace registration {

/// Writes plugins.tok, the list of the plug-in manager's modules, and creates the folders for it, but not the
/// installation folder `root`. One trailing backslash of `root` is ignored. Traces its start and end.
///
/// KE_SUCCESS; KE_MISSING_ARGUMENT when `root` is null, empty or a lone backslash; KE_STORE_UNUSABLE, traced, when the
/// file cannot be opened; KE_EXCEPTION.
KE_RESULT MkKesLpMngTokens(const char* root);

/// Writes every registration file of an installation, from constants and the folder's name: tokens.tok of the
/// scheduler, plugins.tok, KesWD.conf of the watchdog, and the standard plug-ins in the files of their host modules.
/// Creates the folders of programs, services, modules and plug-ins. Token files are replaced; in the others further
/// values stay.
///
/// Stops at the first failure; files and values written before stay. Codes of `MkKesLpMngTokens`; `root` is not null,
/// and KE_STORE_UNUSABLE when it has more than 32,000 characters.
KE_RESULT WriteRegistrationFiles(const char* root);

// The files of modules that host plug-ins: `<module>\<module>.ini` next to the library's own folder. Nothing is cached;
// every call edits its file.
//
// All but `ModuleFile` return KE_SUCCESS; KE_NO_MODULE_DIRECTORY when the library's own folder is unknown;
// KE_STORE_UNUSABLE, traced under `function`, when Windows reports a failed write or removal; earlier changes stay.
// Keys, hosts and types are neither null nor empty.

/// The path of a module's file; empty when the library's own folder is unknown.
std::string ModuleFile(std::string_view module);

/// Registers a plug-in of `host`; a null value removes it.
KE_RESULT AddPlugin(const char* function, const char* key, const char* host, const char* value);

/// Removes a plug-in of `host`. The upgrade module's file is then marked: not installed. For the update module the
/// launcher is notified, and its failures are traced under `function`: KE_LAUNCHER_NOT_LOADED, KE_PROGRAM_NOT_STARTED
/// when its Run failed, KE_STORE_UNUSABLE for a command with an exit code other than 0.
KE_RESULT RemovePlugin(const char* function, const char* key, const char* host);

/// Stores the installed version of a product. That of the agent itself also runs the upgrade module's action, whose
/// result is ignored.
KE_RESULT SetInstalledVersion(const char* function, const char* key, const char* version);

/// Subscribes a plug-in to a policy type, or unsubscribes it. While the plug-in of the central console is subscribed,
/// the configuration module's own plug-in is not.
KE_RESULT AddSubscription(const char* function, const char* key, const char* type);
KE_RESULT RemoveSubscription(const char* function, const char* key, const char* type);

// Re-registration of the protection plug-ins that the installer recorded in the registry.

/// Below HKEY_LOCAL_MACHINE: a text value for each plug-in, the directory of its KERegister.dll.
inline constexpr char kProtectionsKey[] = "Software\\Tavrin Security\\Orvane\\Protections";
inline constexpr std::size_t kLongestProtection = 260;            // characters of a name; a longer one ends the listing
inline constexpr std::size_t kLongestProtectionDirectory = 4097;  // characters

/// A recorded directory with a separator at its end.
std::string PluginFolder(std::string directory);

/// Lets every plug-in under the product's Protections key register itself again, in the order of the values: loads its
/// KERegister.dll, calls it once and frees it. A missing or wrong value, a directory that is no full path and a module
/// that cannot be used are traced and skipped. KE_SUCCESS; KE_REGISTRY_UNUSABLE when the key cannot be opened.
KE_RESULT ReRegisterPluginsFromRegistry();

}  // namespace registration
