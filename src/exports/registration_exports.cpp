// The exports that register modules and plug-ins.

#include <cstdint>

#include "KELUtils.h"
#include "registration/registration.h"
#include "registration/texts.h"
#include "siblings/settings_file.h"
#include "text/text.h"
#include "trace/trace.h"

using text::IsBlank;
using trace::Export;
using trace::ExportCall;

// Installation

KE_RESULT KE_API KE_InitializeSystem(const char* root) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    registration::ReRegisterPluginsFromRegistry();  // whatever comes of it, and of the root
    if (IsBlank(root)) return KE_MISSING_ARGUMENT;
    return registration::WriteRegistrationFiles(root);
  });
}

KE_RESULT KE_API KE_InitializeSystemEx(const char* root, const char* rebootRequired) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    if (rebootRequired && text::SameName(rebootRequired, "TRUE")) {
      siblings::SetMyConfigIniValue("GENERAL", "REBOOT_REQUIRED", rebootRequired,
                                    registration::ModuleFile("KelUpg").c_str());
    }
    return KE_InitializeSystem(root);
  });
}

// Plug-ins, versions, subscriptions

KE_RESULT KE_API KE_AddPlugin(const char* key, const char* host, const char* value) {
  return ExportCall("KE_UTIL_AddPlugin", [&](Export& self) -> KE_RESULT {
    if (IsBlank(key) || IsBlank(host)) return KE_MISSING_ARGUMENT;
    return registration::AddPlugin(self.name, key, host, value);
  });
}

KE_RESULT KE_API KE_RemovePlugin(const char* key, const char* host) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (IsBlank(key) || IsBlank(host)) return KE_MISSING_ARGUMENT;
    return registration::RemovePlugin(self.name, key, host);
  });
}

KE_RESULT KE_API KE_SetVersion(const char* key, const char* version) {
  return ExportCall("KE_UTIL_SetVersion", [&](Export& self) -> KE_RESULT {
    if (IsBlank(key) || IsBlank(version)) return KE_MISSING_ARGUMENT;
    return registration::SetInstalledVersion(self.name, key, version);
  });
}

KE_RESULT KE_API KE_AddPolicyTypeSuscription(const char* key, const char* type) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (IsBlank(key) || IsBlank(type)) return KE_MISSING_ARGUMENT;
    return registration::AddSubscription(self.name, key, type);
  });
}

KE_RESULT KE_API KE_RemovePolicyTypeSuscription(const char* key, const char* type) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (IsBlank(key) || IsBlank(type)) return KE_MISSING_ARGUMENT;
    return registration::RemoveSubscription(self.name, key, type);
  });
}

// The command gate

KE_RESULT KE_API KE_CanRunCommand(const char* command, uint32_t* allowed) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    if (allowed == nullptr) return KE_MISSING_ARGUMENT;
    *allowed = 0;
    int32_t state = 0;
    if (const KE_RESULT result = KE_GetInstallState(&state); result != KE_SUCCESS) return result;
    *allowed = registration::IsCommandAllowed(command, state) ? 1 : 0;
    return KE_SUCCESS;
  });
}
