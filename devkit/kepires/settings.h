// The automatic mode: KePIRes.ini, beside the program, answers instead of a user.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>

#include "kepires/exit_codes.h"

namespace kepires {

/// The section [AUTO]. A key that is missing or empty has the value given here; the mode is on when Answer has one.
struct Automatic {
  std::uint32_t answer = 0;            // Answer: exit code of every question, 0 to 255
  std::uint32_t countDown = 0;         // CountDown: exit code of the countdown, 0 to 255
  std::uint32_t delay = 0;             // Delay: milliseconds before a question or the countdown ends, up to a minute
  std::uint32_t installation = 60000;  // Installation: milliseconds that the event may take, up to an hour
};

/// Reads the settings. `automatic` gets a value when the mode is on. kBadSetting when a value is no number of its
/// range, else none.
std::optional<ExitCode> ReadSettings(std::optional<Automatic>& automatic) noexcept;

}  // namespace kepires
