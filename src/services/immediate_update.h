// The immediate update, run by the launcher module and repeated while the launcher asks for it.
#pragma once

#include <cstdint>

#include "KELUtils.h"

namespace services {

/// Runs the update, and when it ended well again with the order to continue, 20 seconds later, for as long as the
/// launcher answers that there is more to do. The launcher's first answer, whatever the repetitions gave.
/// KE_LAUNCHER_NOT_LOADED, traced under `function`, when the launcher cannot be bound, and when another thread has
/// freed it between two calls: an update that was to go on and did not is no success.
KE_RESULT UpdateAtOnce(const char* function);

/// The same with two values that are passed through, each call and its answer traced under `function`. The result is
/// the code of the exit code that ended the update: 1566, 1558, 1565, 5000 and 1567 become KE_UPDATE_FAILED_...; when
/// the first call failed without one, the launcher's answer.
KE_RESULT UpdateAtOnceEx(const char* function, std::uint32_t first, std::uint32_t second);

}  // namespace services
