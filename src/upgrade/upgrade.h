// The start of an upgrade: brings the configuration files of an existing installation up to the current layout.
#pragma once

#include <cstdint>

#include "KEResults.h"

namespace upgrade {

/// Scheme and host, in front of the SOAP paths.
extern const char kServiceBaseAddress[];

/// Writes message types, event settings, module tokens and the settings of all modules below `installDir`, which is not
/// null, and is cut to 511 characters without one trailing backslash. Every step is tried, also after a failure; each
/// failed write is traced.
///
/// KE_MISSING_ARGUMENT for a directory that is then empty; KE_STORE_UNUSABLE when a write that counts failed.
KE_RESULT StartUpgrade(const char* installDir);

/// Writes server, SOAP namespace and SOAP action address of the two integration actions into KE_AGPRX.dat. A null
/// `server` removes the two servers. Traces nothing.
///
/// KE_NO_MODULE_DIRECTORY; KE_STORE_UNUSABLE when any write failed, after all were tried.
KE_RESULT SetIntegrationServer(const char* server);

// The end of an upgrade.

/// Runs the integration test, schedules the agent's jobs again, stores the version after a successful upgrade (result
/// code 0 or 3010), starts the plug-in manager for the rest of the upgrade, and keeps the store as the start copy. A
/// failed step is traced under `function` and does not stop the others. The code of storing the version, else of
/// starting the plug-in manager.
KE_RESULT CompleteUpgrade(const char* function, std::uint32_t resultCode, const char* version);

/// On a computer that is not integrated, has the plug-in manager run the integration test, and waits up to three
/// minutes for it; its result is ignored. KE_SUCCESS, or KE_PROGRAM_NOT_STARTED. Traces its steps.
KE_RESULT IntegrateComputerKelTest();

/// KE_ScheduleUpgradeComplete(), under its trace name: has the plug-in manager complete the upgrade, without waiting
/// for it; its arguments are cut at 1023 characters. A null version is the empty text. KE_PROGRAM_NOT_STARTED when it
/// cannot be started.
KE_RESULT ScheduleUpgradeComplete(std::int32_t resultCode, const char* version) noexcept;

}  // namespace upgrade
