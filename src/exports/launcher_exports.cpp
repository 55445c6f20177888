// The exports that hand work to the launcher, to the plug-ins and to the installer helper, and their settings files.

#include <cstdint>
#include <string>

#include "KELUtils.h"
#include "agent/operations.h"
#include "siblings/modules.h"
#include "siblings/programs.h"
#include "siblings/settings_file.h"
#include "text/paths.h"
#include "trace/trace.h"
#include "win/file.h"
#include "win/module.h"
#include "win/profile.h"

using trace::Export;
using trace::ExportCall;
using trace::kAlways;
using trace::kDetail;

namespace {

// The settings of the immediate update; empty when the module directory is unknown.
std::string UpdateSettingsFile() {
  const std::string directory = win::GetModuleDirectory();
  return directory.empty() ? directory : text::SiblingFolder(directory, "KesLpmng") + "UPDNW.DAT";
}

void SendReport(const char* function) {
  const siblings::FreeLauncherAtEnd release;
  if (const KE_RESULT result = siblings::OpenLauncher(); result != KE_SUCCESS) {
    Trace(kAlways, function, "Could not load required library, KELMNAPI . Return Error Code : [%i]",
          static_cast<int>(result));
    return;
  }
  std::int32_t exitCode = 0;
  const int returned = siblings::Launcher().Run("KELREPORT -R -force", &exitCode);
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
    const siblings::LauncherRun run = siblings::RunLauncherCommand(self.name, "KELCONF", "KELCONF -LocalCfg -force");
    if (run.exitCode != 0) siblings::TraceLauncherCommandFailed(self.name, "KELCONF", run.exitCode);
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
    const std::string file = text::SiblingFolder(win::GetModuleDirectory(), "KelUpg") + "KelUpg.ini";
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
