// The files of modules that host plug-ins: `<module>\<module>.ini` beside the library's own folder. Nothing is cached;
// every call edits its file.
//
// All but `ModuleFile` answer KE_SUCCESS; KE_NO_MODULE_DIRECTORY when the library's own folder is unknown;
// KE_STORE_UNUSABLE when the platform reports that a write or removal failed, after which what was done before it
// stays; it is traced under `function`. Keys, hosts and types are neither null nor empty.
#pragma once

#include <string>
#include <string_view>

#include "KELUtils.h"

namespace registration {

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

}  // namespace registration
