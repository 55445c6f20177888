#include "agent/operations.h"

#include <optional>

#include "siblings/modules.h"
#include "siblings/plugins.h"
#include "siblings/programs.h"
#include "store/accessors.h"
#include "text/paths.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/process.h"

namespace agent {

namespace {

using siblings::Launcher;
using trace::kDetail;

constexpr DWORD kPauseMilliseconds = 20000;
constexpr std::int32_t kMoreToDo = 1559;  // the exit code that asks for another repetition

struct UpdateFailure {
  std::int32_t exitCode;
  KE_RESULT result;
};

constexpr UpdateFailure kFailures[] = {
    {1566, KE_UPDATE_FAILED_1566}, {1558, KE_UPDATE_FAILED_1558}, {1565, KE_UPDATE_FAILED_1565},
    {5000, KE_UPDATE_FAILED_5000}, {1567, KE_UPDATE_FAILED_1567},
};

KE_RESULT ResultOf(std::int32_t exitCode) noexcept {
  for (const UpdateFailure& row : kFailures) {
    if (row.exitCode == exitCode) return row.result;
  }
  return static_cast<KE_RESULT>(exitCode);
}

/// The launcher's answer to one call.
struct Answer {
  int returned = 0;
  std::int32_t exitCode = 0;

  bool Ended(std::int32_t with) const noexcept { return returned == 0 && exitCode == with; }
};

/// The first answer, and the one that ended the update: the same when nothing was repeated.
struct Course {
  Answer first, last;
};

// Has `update(forceContinue, answer)` call the launcher until there is no more to do. It returns false when the
// launcher is not bound. None, and traced, when the launcher cannot be bound, or another thread has freed it.
template <typename Update>
std::optional<Course> UpdateRepeatedly(const char* function, Update update) {
  const siblings::LauncherScope launcher(function);
  if (!launcher) return std::nullopt;
  Course course;
  const auto call = [&](std::int32_t forceContinue) {
    course.last = {};  // a launcher that writes no exit code has not asked for another repetition
    const bool called = update(forceContinue, course.last);
    if (!called) Trace(kDetail, function, "Could not continue the update: another thread has freed KELMNAPI");
    return called;
  };
  if (!call(0)) return std::nullopt;
  course.first = course.last;
  if (!course.first.Ended(0)) return course;
  do {
    win::Pause(kPauseMilliseconds);
    if (!call(1)) return std::nullopt;
  } while (course.last.Ended(kMoreToDo));
  return course;
}

}  // namespace

KE_RESULT UpdateAtOnce(const char* function) {
  const auto course = UpdateRepeatedly(function, [](std::int32_t forceContinue, Answer& answer) {
    const auto update = Launcher().UpdateNow;
    if (update) answer.returned = update(forceContinue, &answer.exitCode);
    return update != nullptr;
  });
  return course ? static_cast<KE_RESULT>(course->first.returned) : KE_RESULT{KE_LAUNCHER_NOT_LOADED};
}

KE_RESULT UpdateAtOnceEx(const char* function, std::uint32_t firstValue, std::uint32_t secondValue) {
  const auto course = UpdateRepeatedly(function, [&](std::int32_t forceContinue, Answer& answer) {
    const auto update = Launcher().UpdateNowEx;
    if (update == nullptr) return false;
    Trace(kDetail, function, "Ready To launch KELMNAPI_UpdateNowEx with ForceContinue value: %d",
          static_cast<int>(forceContinue));
    answer.returned = update(forceContinue, &answer.exitCode, firstValue, secondValue);
    Trace(kDetail, function, "Back from KELMNAPI_UpdateNowEx with value: %i. Kes_UpdateNowEx returned value: %d",
          answer.returned, static_cast<int>(answer.exitCode));
    return true;
  });
  if (!course) return KE_LAUNCHER_NOT_LOADED;
  if (course->first.Ended(0)) return ResultOf(course->last.exitCode);
  return course->first.exitCode > 0 ? ResultOf(course->first.exitCode) : static_cast<KE_RESULT>(course->first.returned);
}

namespace {

constexpr std::int32_t kDeviceIdSize = 38;  // bytes, with the terminating zero

KE_RESULT Notify(const siblings::PluginPlace& place,
                 decltype(siblings::PluginTable::KECONF_SetInfo) siblings::PluginTable::*setInfo, const char* function,
                 std::int32_t code, const char* value) {
  if (value == nullptr) return KE_MISSING_ARGUMENT;
  return siblings::UsePlugin(place, function, setInfo,
                             [&](auto set) { return static_cast<KE_RESULT>(set(code, value)); });
}

KE_RESULT NotifyRemoteControl(const char* function, std::int32_t code, const char* value) {
  return Notify(siblings::kRemoteControlPlugin, &siblings::PluginTable::KECONF_SetInfo, function, code, value);
}

}  // namespace

KE_RESULT NotificarPasswordRCM_RCM(const char* password) {
  return NotifyRemoteControl(__func__, KE_INFO_PASSWORD, password);
}

KE_RESULT NotificarUserRCM_RCM(const char* user) { return NotifyRemoteControl(__func__, KE_INFO_USER, user); }

KE_RESULT NotificarDeviceID_RCM(const char* deviceId) {
  return NotifyRemoteControl(__func__, KE_INFO_DEVICE_ID, deviceId);
}

KE_RESULT NotificarDeviceID_KEC(const char* deviceId) {
  return Notify(siblings::kInstallerPlugin, &siblings::PluginTable::KEINSTALL_SetInfo, __func__, KE_INFO_DEVICE_ID,
                deviceId);
}

KE_RESULT NotificarPasswordRCM(const char* password) { return NotificarPasswordRCM_RCM(password); }

KE_RESULT NotificarUserRCM(const char* user) { return NotificarUserRCM_RCM(user); }

KE_RESULT NotificarDeviceID(const char* deviceId) {
  const KE_RESULT installer = NotificarDeviceID_KEC(deviceId);
  const KE_RESULT remoteControl = NotificarDeviceID_RCM(deviceId);
  return installer != KE_SUCCESS ? installer : remoteControl;
}

KE_RESULT NotifyStoredDeviceId(std::int32_t target) {
  if (target < 0) return KE_MISSING_ARGUMENT;
  char deviceId[kDeviceIdSize] = {};
  if (const KE_RESULT result =
          store::GetText(store::RowOf(store::kTextGetters, "KE_GetDeviceID"), deviceId, kDeviceIdSize);
      result != KE_SUCCESS)
    return result;
  switch (target) {
    case 0:
      return NotificarDeviceID(deviceId);
    case 1:
      return NotificarDeviceID_KEC(deviceId);
    case 2:
      return NotificarDeviceID_RCM(deviceId);
    default:
      return KE_MISSING_ARGUMENT;
  }
}

}  // namespace agent
