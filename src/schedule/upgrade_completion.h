// What is done when an upgrade of the agent has ended.
#pragma once

#include <cstdint>

#include "KELUtils.h"

namespace schedule {

/// Runs the integration test, schedules the agent's tasks anew, stores the version after a successful upgrade (result
/// code 0 or 3010), starts the plug-in manager for the rest of the upgrade, and keeps the store as the start copy. A
/// failed step is traced under `function` and does not stop the others. The code of storing the version, else of
/// starting the plug-in manager.
KE_RESULT CompleteUpgrade(const char* function, std::uint32_t resultCode, const char* version);

/// Has the plug-in manager complete the upgrade, without waiting for it; its arguments are cut at 1023 characters. A
/// null version is the empty text. KE_PROGRAM_NOT_STARTED when it cannot be started.
KE_RESULT StartUpgradeCompletion(const char* function, std::int32_t resultCode, const char* version);

}  // namespace schedule
