// Running a component: its program, else its action module.
#pragma once

#include <cstdint>

#include "kelmnapi/component_command.h"
#include "kelmnapi/results.h"

namespace kelmnapi {

/// The first argument of an action module's Do: run now. The second is what the caller passes on.
inline constexpr std::uint32_t kRunAction = 0;

/// Runs `<folder of this DLL>\..\<component>\<component>.exe` with the rest of the command and waits for its end, for
/// as long as the settings allow ([WAIT] Milliseconds). Without such a file, loads `<component>.dll` from there and
/// calls its Do(kRunAction, `second`). Throws when memory runs out.
Outcome RunComponent(const ComponentCommand& command, std::uint32_t second);

}  // namespace kelmnapi
