// Which commands of the agent may run while its installation is not complete.
#pragma once

#include <cstdint>

namespace registration {

/// True when the command may run in an installation state. From the complete installation on every command may, known
/// or not, also a null one; before, only the listed ones in their states. Letter case does not count.
bool IsCommandAllowed(const char* command, std::int32_t state) noexcept;

}  // namespace registration
