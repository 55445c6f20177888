#include "services/plugin_notification.h"

#include "services/plugin.h"

namespace services {
namespace {

constexpr std::int32_t kDeviceIdSize = 38;  // bytes, with the terminating zero

KE_RESULT Notify(const PluginPlace& place, decltype(PluginTable::KECONF_SetInfo) PluginTable::*setInfo,
                 const char* function, std::int32_t code, const char* value) {
  if (value == nullptr) return KE_MISSING_ARGUMENT;
  return UsePlugin(place, function, setInfo, [&](auto set) { return static_cast<KE_RESULT>(set(code, value)); });
}

KE_RESULT NotifyRemoteControl(const char* function, std::int32_t code, const char* value) {
  return Notify(kRemoteControlPlugin, &PluginTable::KECONF_SetInfo, function, code, value);
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
  return Notify(kInstallerPlugin, &PluginTable::KEINSTALL_SetInfo, __func__, KE_INFO_DEVICE_ID, deviceId);
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
  if (const KE_RESULT result = KE_GetDeviceID(deviceId, kDeviceIdSize); result != KE_SUCCESS) return result;
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

}  // namespace services
