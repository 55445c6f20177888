// The states of the agent's installation, a number of the store.
#pragma once

#include <cstdint>

namespace frame {

/// The states from here on are those of a complete installation.
inline constexpr std::int32_t kInstallComplete = 200;

}  // namespace frame
