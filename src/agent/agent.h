// The services of the agent: events, server and proxies, launcher and plug-ins, prompts. `function` is the name of the
// export, under which failures are traced.
#pragma once

#include <cstdint>
#include <string>

#include "KEResults.h"

namespace agent {

// The server and the proxies in the agent module's configuration. The module is bound for the call.

/// Stores the server's address, cut at 511 characters; `server` is not null.
///
/// KE_AGENT_NOT_LOADED when the module cannot be loaded or lacks a function; KE_AGENT_READ_FAILED and
/// KE_AGENT_WRITE_FAILED when it refuses the record.
KE_RESULT SetAgentServer(const char* function, const char* server);

/// The body of KE_GetConfiguratedProxy, with its codes.
KE_RESULT GetConfiguredProxy(const char* function, KE_PROXY& proxy);

/// The arguments of KE_SetAgentProxyInfo, none of them null. User and password are setting texts.
struct ProxySettings {
  const char* server;
  const char* port;
  const char* user;
  const char* password;
};

/// The body of KE_SetAgentProxyInfo, with its codes. Decrypted texts are wiped.
KE_RESULT SetAgentProxy(const char* function, const ProxySettings& settings);

/// The body of KE_SetStaticProxyInfo, with its codes; both texts may be null.
KE_RESULT SetStaticProxy(const char* function, const char* host, const char* addresses);

/// The body of KE_GetInetConfig, with its codes; `size` is that of the caller's proxy in bytes.
KE_RESULT GetInternetProxy(const char* function, KE_PROXY& proxy, std::uint32_t size);

// Events. Each function sends one through the event module, which is bound for the call. Texts may be null.
//
// KE_EVENTS_UNAVAILABLE when the module cannot be bound; KE_EVENT_NOT_SENT when it refuses the connection or the event.

/// The state of a scan, with the time of day.
KE_RESULT SendScanState(const char* function, const char* product, const char* taskId, std::int32_t status);

/// A forced restart.
KE_RESULT SendRebootForced(const char* function, const char* product);

/// The uninstallation of the agent: runs the upgrade module's action, sends the event, waits 30 seconds if connected,
/// and removes the agent's shutdown script on every path.
KE_RESULT ReportUninstallation(const char* function, const char* product);

/// An error of the agent with its description. Without a description nothing is sent, and the result is that of
/// KE_GetEventDescription.
KE_RESULT SendError(const char* function, std::uint32_t eventClass, std::uint32_t source, std::uint32_t errorCode,
                    const char* insert);

/// KE_GetEventDescription(), under its trace name.
KE_RESULT GetEventDescription(std::uint32_t errorCode, char* buffer, std::int32_t size, const char* insert) noexcept;

/// Has the launcher start the event service. KE_EVENTS_UNAVAILABLE when that fails.
KE_RESULT StartEventService(const char* function);

// Operations of the launcher module and of the plug-ins.

/// Has the launcher send a report. Failures are only traced.
void SendReport(const char* function);

/// Has the launcher apply the local configuration. Failures are only traced.
void ApplyLocalConfiguration(const char* function);

/// Runs the immediate update, and after a success repeats it every 20 seconds while the launcher asks for that. Returns
/// the launcher's first result. KE_LAUNCHER_NOT_LOADED when the launcher cannot be bound, and when another thread has
/// freed it between two calls: an unfinished update is no success.
KE_RESULT UpdateAtOnce(const char* function);

/// The same with two values that are passed through, each call and its result traced under `function`. The result is
/// the code of the exit code that ended the update: 1566, 1558, 1565, 5000 and 1567 become KE_UPDATE_FAILED_...; when
/// the first call failed without one, the launcher's result.
KE_RESULT UpdateAtOnceEx(const char* function, std::uint32_t first, std::uint32_t second);

/// The path of the immediate update's settings; empty when the module directory is unknown.
std::string UpdateSettingsFile();

// Notifications of the plug-ins about changed values. Each function returns the plug-in's result; KE_MISSING_ARGUMENT
// for a null text; KE_MODULE_NOT_LOADED when the remote-control plug-in cannot be used, KE_INSTALLER_PLUGIN_UNUSABLE
// when the installer plug-in cannot.

/// Notify the remote-control plug-in.
KE_RESULT NotificarPasswordRCM(const char* password);
KE_RESULT NotificarUserRCM(const char* user);

/// Notifies both plug-ins; of two failures the installer plug-in's is returned.
KE_RESULT NotificarDeviceID(const char* deviceId);

/// Notifies both plug-ins (`target` 0), the installer plug-in (1) or the remote-control plug-in (2) of the stored
/// device identifier. KE_MISSING_ARGUMENT for any other target; the codes of KE_GetDeviceID.
KE_RESULT NotifyStoredDeviceId(std::int32_t target);

// Prompts: the program that asks the user. Results are KE_SUCCESS or a code of `siblings::StartAndWait`;
// KE_PROGRAM_NOT_STARTED also for an unknown module directory.

/// Asks whether the computer may be restarted now, and waits for the answer, 0 to 2, which is 0 after a failure.
KE_RESULT AskCanReboot(const char* function, std::uint32_t& answer);

/// Asks a question of any kind, for `seconds`, in the same way. Traces the command line.
KE_RESULT AskUser(const char* function, std::int32_t kind, std::int32_t seconds, std::uint32_t& answer);

/// Shows the countdown to a restart and waits for its end.
KE_RESULT ShowRebootCountDown(const char* function, std::int32_t seconds);

/// Starts the installation dialog without waiting: KE_SUCCESS, or KE_PROGRAM_NOT_STARTED.
KE_RESULT ShowInstallDialog(const char* function, std::uint32_t rebootMessage);

/// Closes an installation dialog, if there is one.
void CloseInstallDialog() noexcept;

/// While an installation may be running (the stored state is 40 to 47, or cannot be read), brings the window of the
/// installation guide to the foreground, has it close, and stores the state 47 unless a later one is stored. KE_SUCCESS
/// also without a window, and when the state could not be stored.
KE_RESULT HideInstallGuide();

}  // namespace agent
