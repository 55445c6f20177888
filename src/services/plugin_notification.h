// Telling the plug-ins about changed credentials and the device identifier.
//
// Each function returns what the plug-in answers; KE_MISSING_ARGUMENT for a null text; KE_MODULE_NOT_LOADED when the
// remote-control plug-in is not usable, KE_INSTALLER_PLUGIN_UNUSABLE when the installer plug-in is not.
#pragma once

#include <cstdint>

#include "KELUtils.h"

namespace services {

/// Tells the remote-control plug-in.
KE_RESULT NotificarPasswordRCM_RCM(const char* password);
KE_RESULT NotificarUserRCM_RCM(const char* user);
KE_RESULT NotificarDeviceID_RCM(const char* deviceId);

/// Tells the installer plug-in.
KE_RESULT NotificarDeviceID_KEC(const char* deviceId);

/// Tell everybody who wants to know; of two failures the installer plug-in's is returned.
KE_RESULT NotificarPasswordRCM(const char* password);
KE_RESULT NotificarUserRCM(const char* user);
KE_RESULT NotificarDeviceID(const char* deviceId);

/// Tells the stored device identifier to both plug-ins (`target` 0), to the installer plug-in (1) or to the
/// remote-control plug-in (2). KE_MISSING_ARGUMENT for any other target; the codes of KE_GetDeviceID.
KE_RESULT NotifyStoredDeviceId(std::int32_t target);

}  // namespace services
