// Actions that a sibling product ships as a DLL with one entry point.
#pragma once

#include <cstdint>

#include "KELUtils.h"

namespace frame {

/// Loads the action module `name` from its folder beside the module directory, calls its `Do` with both arguments and
/// frees it. The result of `Do`; KE_OUT_OF_RANGE for a null name, KE_MODULE_NOT_LOADED when the module or its entry
/// point cannot be loaded, or the module directory is unknown. Traces its start and its end.
KE_RESULT ExecuteLocalProcessAction(const char* name, std::uint32_t first, std::uint32_t second);

}  // namespace frame
