// The descriptions of the agent's errors: string resources of the prompt program.
#pragma once

#include <cstddef>
#include <cstdint>

#include "KELUtils.h"

namespace services {

/// Puts the description of the error, with `insert` (which may be null) in it, into a buffer of `size` bytes, which is
/// not 0, cut to what fits; after a failure the buffer stays as it was.
///
/// KE_MODULE_NOT_LOADED when KePIRes.exe cannot be loaded, KE_EVENT_NOT_SENT when it has no such text; both are traced
/// under `function`.
KE_RESULT DescribeError(const char* function, std::uint32_t errorCode, const char* insert, char* buffer,
                        std::size_t size);

}  // namespace services
