// The log of the module's calls.
#pragma once

#include "kelagapi/records.h"

namespace kelagapi {

/// Appends a call with its result to the log beside the module, and hands the result on, whether or not it was logged.
/// The second form is for a call about a record: it tells which one and its size, never its content.
Result Logged(const char* function, Result result) noexcept;
Result Logged(const char* function, RecordKey key, std::uint32_t size, Result result) noexcept;

}  // namespace kelagapi
