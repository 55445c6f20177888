// A command for a component of the product, such as "KELREPORT -R -force".
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace kelmnapi {

inline constexpr std::size_t kLongestCommand = 8191;
inline constexpr std::size_t kLongestName = 64;

/// The parts of a command, which they point into.
struct ComponentCommand {
  std::string_view component;
  std::string_view rest;  // from the blank or tab after the name on; empty when there is none
};

/// Takes a command apart. None when it is too long, or when its first word is no component name: 1 to kLongestName
/// letters and digits (of ASCII), but not the name of a device. The command begins with the name.
std::optional<ComponentCommand> ParseCommand(std::string_view command) noexcept;

}  // namespace kelmnapi
