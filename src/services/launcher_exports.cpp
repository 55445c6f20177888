// The exports that hand work to the launcher, to the plug-ins and to the installer helper, and their settings files.
#include <cstdint>
#include <string>

#include "KELUtils.h"
#include "frame/component.h"
#include "frame/export_call.h"
#include "frame/module.h"
#include "frame/paths.h"
#include "frame/settings_file.h"
#include "services/agent_programs.h"
#include "services/immediate_update.h"
#include "services/plugin_notification.h"
#include "win/file.h"
#include "win/profile.h"

using frame::Export;
using frame::ExportCall;
using frame::kAlways;
using frame::kDetail;

namespace {

// The settings of the immediate update; empty when the module directory is unknown.
std::string UpdateSettingsFile() {
  const std::string directory = frame::GetModuleDirectory();
  return directory.empty() ? directory : frame::SiblingFolder(directory, "KesLpmng") + "UPDNW.DAT";
}

void SendReport(const char* function) {
  const frame::FreeLauncherAtEnd release;
  if (const KE_RESULT result = frame::OpenLauncher(); result != KE_SUCCESS) {
    Trace(kAlways, function, "Could not load required library, KELMNAPI . Return Error Code : [%i]",
          static_cast<int>(result));
    return;
  }
  std::int32_t exitCode = 0;
  const int returned = frame::Launcher().Run("KELREPORT -R -force", &exitCode);
  if (returned != 0) {
    Trace(kDetail, function, "Could not Run KelReport. Launcher function returned code :%i)", returned);
  }
  Trace(kDetail, function, "KelReport Run returned code :%i)", static_cast<int>(exitCode));
}

}  // namespace

KE_RESULT KE_API KE_SendReport(void) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    SendReport(self.name);
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_AplyLocalRCMCfg(void) {
  return ExportCall("KE_AplyLocalCfg", [&](Export& self) -> KE_RESULT {
    const frame::ComponentRun run = frame::RunComponent(self.name, "KELCONF", "KELCONF -LocalCfg -force");
    if (run.exitCode != 0) frame::TraceComponentFailed(self.name, "KELCONF", run.exitCode);
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_UpdateNow(void) {
  return ExportCall(__func__, [&](Export& self) { return services::UpdateAtOnce(self.name); });
}

KE_RESULT KE_API KE_UpdateNowEx(uint32_t first, uint32_t second) {
  return ExportCall(__func__, [&](Export& self) { return services::UpdateAtOnceEx(self.name, first, second); });
}

KE_RESULT KE_API KE_GetUpdateNowConfig(const char* section, const char* key, const char* def, char* buffer,
                                       uint32_t bufferSize) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    const std::string file = UpdateSettingsFile();
    if (!file.empty() && buffer != nullptr && bufferSize != 0) {
      win::ReadProfile(file.c_str(), section, key, def, buffer, bufferSize);
    }
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_SetUpdateNowConfig(const char* section, const char* key, const char* value, uint32_t onlyIfExists) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    const std::string file = UpdateSettingsFile();
    // Without a section there is nothing to write, and not every platform takes that well.
    if (!file.empty() && section != nullptr && (onlyIfExists == 0 || win::Exists(file))) {
      win::WriteProfile(file, section, key, value);
    }
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_SetNoCheckAVValue(int32_t value) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    const std::string text = std::to_string(value);
    const std::string file = frame::SiblingFolder(frame::GetModuleDirectory(), "KelUpg") + "KelUpg.ini";
    const KE_RESULT check = frame::SetMyConfigIniValue("GENERAL", "NoCheckAV", text.c_str(), file.c_str());
    const KE_RESULT install = frame::SetMyConfigIniValue("KEC", "InstallWithOtherProducts", text.c_str(), file.c_str());
    return check == KE_SUCCESS && install == KE_SUCCESS ? KE_SUCCESS : KE_NOT_CREATED;
  });
}

KE_RESULT KE_API KE_NotifyDeviceID(int32_t target) {
  return ExportCall(__func__, [&](Export&) { return services::NotifyStoredDeviceId(target); });
}

KE_RESULT KE_API KE_LaunchKEPWInst(void) {
  return ExportCall("LaunchKEPWinst", [&](Export& self) { return services::StartInstallHelper(self.name); });
}
