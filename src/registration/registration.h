// The token files below the installation folder. Each function creates the folders it needs, but not the installation
// folder itself, writes its file from constants and the folder's name, and traces its start and end.
//
// KE_SUCCESS; KE_MISSING_ARGUMENT when `root` is null, empty or a lone backslash; KE_STORE_UNUSABLE, traced, when the
// file could not be opened, or a value of KesWD.conf not written; KE_EXCEPTION. One trailing backslash of `root` does
// not count.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "KEResults.h"

namespace registration {

/// plugins.tok of the plug-in manager: its plug-in modules. Written whole.
KE_RESULT MkKesLpMngTokens(const char* root);

/// tokens.tok of the scheduler: the programs that its jobs may name. Written whole; the programs' folders are created
/// too.
KE_RESULT MkSchedulerKepLpMngToken(const char* root);

/// KesWD.conf of the watchdog: the services it supervises, whose folders are created too. Other keys and sections stay;
/// what was written before a failure stays too.
KE_RESULT MkKesWdTokens(const char* root);

// The plug-ins that every installation has: the files of their host modules below the installation folder.

/// Each enters the standard plug-ins of one host module (configuration, update, upgrade) into its file, and creates the
/// folders of module and plug-ins, but not the installation folder itself. Other values of the file stay; so does what
/// was written before a failure. One trailing backslash of `root` does not count.
///
/// KE_SUCCESS; KE_MISSING_ARGUMENT when `root` is null, empty or a lone backslash; KE_STORE_UNUSABLE when a value could
/// not be written, which is traced.
KE_RESULT RegisterStdKelConfPlugins(const char* root);
KE_RESULT RegisterStdKelUpdPlugins(const char* root);
KE_RESULT RegisterStdKelUpgPlugins(const char* root);

/// Writes every registration file: the token files, then the files of the host modules. Stops at the first that fails
/// and returns its code; the ones before it stay. `root` is not null; KE_STORE_UNUSABLE when it has more than 32,000
/// characters.
KE_RESULT WriteRegistrationFiles(const char* root);

// The files of modules that host plug-ins: `<module>\<module>.ini` beside the library's own folder. Nothing is cached;
// every call edits its file.
//
// All but `ModuleFile` answer KE_SUCCESS; KE_NO_MODULE_DIRECTORY when the library's own folder is unknown;
// KE_STORE_UNUSABLE when the platform reports that a write or removal failed, after which what was done before it
// stays; it is traced under `function`. Keys, hosts and types are neither null nor empty.

/// The path of a module's file; empty when the library's own folder is unknown.
std::string ModuleFile(std::string_view module);

/// Enters a plug-in of `host`; a null value takes it out.
KE_RESULT AddPlugin(const char* function, const char* key, const char* host, const char* value);

/// Takes a plug-in of `host` out. The upgrade module's file then says that the component is not installed; for the
/// update module the launcher is told, and its failures are traced under `function`: KE_LAUNCHER_NOT_LOADED,
/// KE_PROGRAM_NOT_STARTED when its Run failed, KE_STORE_UNUSABLE for a command that ended with another exit code than
/// 0.
KE_RESULT RemovePlugin(const char* function, const char* key, const char* host);

/// Records the installed version of a component. The one of the agent itself then runs the upgrade module's action,
/// whose result does not count.
KE_RESULT SetInstalledVersion(const char* function, const char* key, const char* version);

/// Subscribes a plug-in to a policy type, or withdraws it. While the central console's plug-in is subscribed, the
/// configuration module's own is not.
KE_RESULT AddSubscription(const char* function, const char* key, const char* type);
KE_RESULT RemoveSubscription(const char* function, const char* key, const char* type);

// Re-registration of the protection plug-ins that the installer recorded in the registry.

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

}  // namespace registration
