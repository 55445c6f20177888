// A prompt, as the command line asks for it. No platform call.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "kepires/exit_codes.h"

namespace kepires {

/// The kinds of prompt with a dialog of their own. Every other number is a question too.
inline constexpr std::int32_t kCanRebootQuestion = 1, kRebootCountDown = 2, kInstallationDialog = 4;

/// Seconds of a countdown whose command line names none.
inline constexpr std::uint32_t kDefaultCountDown = 60;

struct Prompt {
  std::int32_t kind = 0;                // -MsgType
  std::optional<std::int32_t> seconds;  // -sec
  std::uint32_t rebootMessage = 0;      // -RebootMsg
};

/// The part of a command line after the program. `fileName` is the program's own file name; its path may stand in front
/// without quotes, blanks and all, so what counts is the last place of the name. A command line that begins with a
/// quote has the program inside of the quotes; one without the name begins with the program as its first word.
std::string_view SwitchesOf(std::string_view commandLine, std::string_view fileName) noexcept;

/// Reads the switches, which are known in any letter case and stand in any order, between blanks. None when all is
/// well; `prompt` is then complete.
std::optional<ExitCode> ReadSwitches(std::string_view switches, Prompt& prompt) noexcept;

/// After how many seconds the prompt ends by itself; none when it waits as long as it takes.
///   countdown     its seconds, none named: kDefaultCountDown; a negative number counts as 0
///   installation  none
///   question      its seconds, when they are above 0
std::optional<std::uint32_t> TimeLimitOf(const Prompt& prompt) noexcept;

/// The decimal number that is the whole of `text`, with a minus sign or without a sign; none for anything else, also
/// when the type cannot hold it.
template <typename Number>
std::optional<Number> NumberFrom(std::string_view text) noexcept;

}  // namespace kepires
