// Operations that the launcher module and the plug-ins carry out.
#pragma once

#include <cstdint>
#include <string>

#include "KEResults.h"
#include "win/process.h"

namespace agent {

// The immediate update, run by the launcher module and repeated while the launcher asks for it.

/// Runs the update, and when it ended well again with the order to continue, 20 seconds later, for as long as the
/// launcher answers that there is more to do. The launcher's first answer, whatever the repetitions gave.
/// KE_LAUNCHER_NOT_LOADED, traced under `function`, when the launcher cannot be bound, and when another thread has
/// freed it between two calls: an update that was to go on and did not is no success.
KE_RESULT UpdateAtOnce(const char* function);

/// The same with two values that are passed through, each call and its answer traced under `function`. The result is
/// the code of the exit code that ended the update: 1566, 1558, 1565, 5000 and 1567 become KE_UPDATE_FAILED_...; when
/// the first call failed without one, the launcher's answer.
KE_RESULT UpdateAtOnceEx(const char* function, std::uint32_t first, std::uint32_t second);

// Telling the plug-ins about changed credentials and the device identifier.
//
// Each function returns what the plug-in answers; KE_MISSING_ARGUMENT for a null text; KE_MODULE_NOT_LOADED when the
// remote-control plug-in is not usable, KE_INSTALLER_PLUGIN_UNUSABLE when the installer plug-in is not.

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

}  // namespace agent
