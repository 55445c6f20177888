#include <optional>
#include <utility>

#include "agent/agent.h"
#include "siblings/modules.h"
#include "siblings/plugins.h"
#include "siblings/sibling_table.h"
#include "store/accessors.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/process.h"

namespace agent {

namespace {

using siblings::Launcher;
using trace::kDetail;

constexpr DWORD kPauseMilliseconds = 20000;
constexpr std::int32_t kMoreToDo = 1559;    // the exit code that asks for another repetition
constexpr std::int32_t kDeviceIdSize = 38;  // bytes, with the terminating zero

constexpr std::pair<std::int32_t, KE_RESULT> kFailures[] = {
    {1566, KE_UPDATE_FAILED_1566}, {1558, KE_UPDATE_FAILED_1558}, {1565, KE_UPDATE_FAILED_1565},
    {5000, KE_UPDATE_FAILED_5000}, {1567, KE_UPDATE_FAILED_1567},
};

KE_RESULT ResultOf(std::int32_t exitCode) noexcept {
  for (const auto& [failure, result] : kFailures) {
    if (failure == exitCode) return result;
  }
  return static_cast<KE_RESULT>(exitCode);
}

// The outcome of one call of the launcher.
struct Run {
  int returned = 0;
  std::int32_t exitCode = 0;

  bool Ended(std::int32_t with) const noexcept { return returned == 0 && exitCode == with; }
};

// The first call, and the one that ended the update: the same without a repetition.
struct Update {
  Run first, last;
};

// Calls `call(forceContinue, run)`, which runs the launcher, until there is no more to do. It returns false when the
// launcher is not bound. None, and traced, when the launcher cannot be bound, or another thread has freed it.
template <typename Call>
std::optional<Update> UpdateRepeatedly(const char* function, Call call) {
  const siblings::LauncherScope launcher(function);
  if (!launcher) return std::nullopt;
  Update update;
  for (std::int32_t forceContinue = 0;; forceContinue = 1) {
    update.last = {};  // a launcher that stores no exit code does not ask for a repetition
    if (!call(forceContinue, update.last)) {
      Trace(kDetail, function, "Could not continue the update: another thread has freed KELMNAPI");
      return std::nullopt;
    }
    if (forceContinue == 0) update.first = update.last;
    if (!update.last.Ended(forceContinue == 0 ? 0 : kMoreToDo)) return update;
    win::Pause(kPauseMilliseconds);
  }
}

using SetInfo = decltype(siblings::PluginTable::KECONF_SetInfo);

KE_RESULT Notify(const siblings::PluginPlace& place, SetInfo siblings::PluginTable::*setInfo, const char* function,
                 std::int32_t code, const char* value) {
  if (value == nullptr) return KE_MISSING_ARGUMENT;
  return siblings::UsePlugin(place, function, setInfo,
                             [&](auto set) { return static_cast<KE_RESULT>(set(code, value)); });
}

KE_RESULT NotifyRemoteControl(const char* function, std::int32_t code, const char* value) {
  return Notify(siblings::kRemoteControlPlugin, &siblings::PluginTable::KECONF_SetInfo, function, code, value);
}

KE_RESULT NotificarDeviceID_RCM(const char* deviceId) {
  return NotifyRemoteControl(__func__, KE_INFO_DEVICE_ID, deviceId);
}

KE_RESULT NotificarDeviceID_KEC(const char* deviceId) {
  return Notify(siblings::kInstallerPlugin, &siblings::PluginTable::KEINSTALL_SetInfo, __func__, KE_INFO_DEVICE_ID,
                deviceId);
}

}  // namespace

void SendReport(const char* function) {
  const siblings::FreeLauncherAtEnd release;
  if (const KE_RESULT result = siblings::OpenLauncher(); result != KE_SUCCESS) {
    Trace(trace::kAlways, function, "Could not load required library, KELMNAPI . Return Error Code : [%i]",
          static_cast<int>(result));
    return;
  }
  std::int32_t exitCode = 0;
  const int returned = Launcher().Run("KELREPORT -R -force", &exitCode);
  if (returned != 0)
    Trace(kDetail, function, "Could not Run KelReport. Launcher function returned code :%i)", returned);
  Trace(kDetail, function, "KelReport Run returned code :%i)", static_cast<int>(exitCode));
}

void ApplyLocalConfiguration(const char* function) {
  const siblings::LauncherRun run = siblings::RunLauncherCommand(function, "KELCONF", "KELCONF -LocalCfg -force");
  if (run.exitCode != 0) siblings::TraceLauncherCommandFailed(function, "KELCONF", run.exitCode);
}

KE_RESULT UpdateAtOnce(const char* function) {
  const auto update = UpdateRepeatedly(function, [](std::int32_t forceContinue, Run& run) {
    const auto updateNow = Launcher().UpdateNow;
    if (updateNow) run.returned = updateNow(forceContinue, &run.exitCode);
    return updateNow != nullptr;
  });
  return update ? static_cast<KE_RESULT>(update->first.returned) : KE_RESULT{KE_LAUNCHER_NOT_LOADED};
}

KE_RESULT UpdateAtOnceEx(const char* function, std::uint32_t firstValue, std::uint32_t secondValue) {
  const auto update = UpdateRepeatedly(function, [&](std::int32_t forceContinue, Run& run) {
    const auto updateNow = Launcher().UpdateNowEx;
    if (updateNow == nullptr) return false;
    Trace(kDetail, function, "Ready To launch KELMNAPI_UpdateNowEx with ForceContinue value: %d",
          static_cast<int>(forceContinue));
    run.returned = updateNow(forceContinue, &run.exitCode, firstValue, secondValue);
    Trace(kDetail, function, "Back from KELMNAPI_UpdateNowEx with value: %i. Kes_UpdateNowEx returned value: %d",
          run.returned, static_cast<int>(run.exitCode));
    return true;
  });
  if (!update) return KE_LAUNCHER_NOT_LOADED;
  const Run& first = update->first;
  if (first.Ended(0)) return ResultOf(update->last.exitCode);
  return first.exitCode > 0 ? ResultOf(first.exitCode) : static_cast<KE_RESULT>(first.returned);
}

std::string UpdateSettingsFile() { return win::ComponentFile(siblings::kPluginManager.folder, "UPDNW.DAT"); }

KE_RESULT NotificarPasswordRCM(const char* password) {
  return NotifyRemoteControl("NotificarPasswordRCM_RCM", KE_INFO_PASSWORD, password);
}

KE_RESULT NotificarUserRCM(const char* user) { return NotifyRemoteControl("NotificarUserRCM_RCM", KE_INFO_USER, user); }

KE_RESULT NotificarDeviceID(const char* deviceId) {
  const KE_RESULT installer = NotificarDeviceID_KEC(deviceId);
  const KE_RESULT remoteControl = NotificarDeviceID_RCM(deviceId);
  return installer != KE_SUCCESS ? installer : remoteControl;
}

KE_RESULT NotifyStoredDeviceId(std::int32_t target) {
  if (target < 0) return KE_MISSING_ARGUMENT;
  char deviceId[kDeviceIdSize] = {};
  const KE_RESULT result = store::GetText(store::RowOf(store::kTextGetters, "KE_GetDeviceID"), deviceId, kDeviceIdSize);
  if (result != KE_SUCCESS) return result;
  if (target == 0) return NotificarDeviceID(deviceId);
  if (target == 1) return NotificarDeviceID_KEC(deviceId);
  return target == 2 ? NotificarDeviceID_RCM(deviceId) : KE_RESULT{KE_MISSING_ARGUMENT};
}

}  // namespace agent
