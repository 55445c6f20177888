// What the plug-ins share: being initialised, being told something, and the log of both. Every function may be called
// from any thread, keeps the last-error value and does not throw. Each appends a line `<function>;<result>;...` to the
// log beside the plug-in, and gives kNotLogged in place of success when that fails.
#pragma once

#include <cstdint>

#include "plugin/results.h"

namespace plugin {

/// Accepts the one mode that the settings name ([PLUGIN] Mode), which is 6 by default. Each success is to be answered
/// by one `Finalise`; the plug-in stays initialised until the last.
Result Initialise(std::int32_t mode) noexcept;
Result Finalise() noexcept;

bool IsInitialised() noexcept;

/// Notes what the plug-in is told; the text of a password is never shown. `function` is the name of the export.
Result SetInfo(const char* function, std::int32_t code, const char* value) noexcept;

/// Appends the line `<function>;<result>;<detail>`. `detail` has at most 540 characters.
Result Record(const char* function, Result result, const char* detail) noexcept;

}  // namespace plugin
