// The events of the agent. Each function sends one, and traces under `function` what goes wrong. Texts may be null.
//
// KE_EVENTS_UNAVAILABLE when the event module cannot be bound, KE_EVENT_NOT_SENT when it refuses the connection or the
// event.
#pragma once

#include <cstdint>

#include "KELUtils.h"

namespace services {

/// The state of a scan, with the time of day.
KE_RESULT SendScanState(const char* function, const char* product, const char* taskId, std::int32_t status);

/// A forced restart.
KE_RESULT SendRebootForced(const char* function, const char* product);

/// The end of the agent: lets the upgrade module act, sends the event, waits 30 seconds when there was a connection,
/// and removes the agent's shutdown script on every path.
KE_RESULT ReportUninstallation(const char* function, const char* product);

/// An error of the agent with its description. Without one nothing is sent, and the result is that of
/// KE_GetEventDescription.
KE_RESULT SendError(const char* function, std::uint32_t eventClass, std::uint32_t source, std::uint32_t errorCode,
                    const char* insert);

}  // namespace services
