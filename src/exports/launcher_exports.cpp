// The exports that use the launcher, the plug-ins and the installer helper, and those of their settings files.

#include <cstdint>
#include <string>

#include "KELUtils.h"
#include "agent/agent.h"
#include "siblings/programs.h"
#include "siblings/settings_file.h"
#include "trace/trace.h"
#include "win/file.h"
#include "win/module.h"
#include "win/profile.h"

using trace::Export;
using trace::ExportCall;

KE_RESULT KE_API KE_SendReport(void) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    agent::SendReport(self.name);
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_AplyLocalRCMCfg(void) {
  return ExportCall("KE_AplyLocalCfg", [&](Export& self) -> KE_RESULT {
    agent::ApplyLocalConfiguration(self.name);
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_UpdateNow(void) {
  return ExportCall(__func__, [&](Export& self) { return agent::UpdateAtOnce(self.name); });
}

KE_RESULT KE_API KE_UpdateNowEx(uint32_t first, uint32_t second) {
  return ExportCall(__func__, [&](Export& self) { return agent::UpdateAtOnceEx(self.name, first, second); });
}

KE_RESULT KE_API KE_GetUpdateNowConfig(const char* section, const char* key, const char* def, char* buffer,
                                       uint32_t bufferSize) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    const std::string file = agent::UpdateSettingsFile();
    if (!file.empty() && buffer != nullptr && bufferSize != 0) {
      win::ReadProfile(file.c_str(), section, key, def, buffer, bufferSize);
    }
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_SetUpdateNowConfig(const char* section, const char* key, const char* value, uint32_t onlyIfExists) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    const std::string file = agent::UpdateSettingsFile();
    // Not every Windows accepts a null section.
    if (!file.empty() && section != nullptr && (onlyIfExists == 0 || win::Exists(file))) {
      win::WriteProfile(file, section, key, value);
    }
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_SetNoCheckAVValue(int32_t value) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    const std::string text = std::to_string(value);
    const std::string file = win::ComponentFile("KelUpg", "KelUpg.ini");
    const KE_RESULT check = siblings::SetMyConfigIniValue("GENERAL", "NoCheckAV", text.c_str(), file.c_str());
    const KE_RESULT install =
        siblings::SetMyConfigIniValue("KEC", "InstallWithOtherProducts", text.c_str(), file.c_str());
    return check == KE_SUCCESS && install == KE_SUCCESS ? KE_SUCCESS : KE_NOT_CREATED;
  });
}

KE_RESULT KE_API KE_NotifyDeviceID(int32_t target) {
  return ExportCall(__func__, [&](Export&) { return agent::NotifyStoredDeviceId(target); });
}

KE_RESULT KE_API KE_LaunchKEPWInst(void) { return siblings::LaunchInstallHelper(); }
