// A prompt, as the command line asks for it. No call of Windows.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kepires {

/// The exit codes. 0, 1 and 2 are answers; the others are failures.
enum ExitCode : int {
  kYes = 0,  // also: the countdown is over, the installation dialog was closed
  kNo = 1,
  kLater = 2,
  kUnknownSwitch = 3,   // a word of the command line is not a switch
  kBadNumber = 4,       // the number of a switch is missing or out of range
  kRepeatedSwitch = 5,  // a switch is there twice
  kNoKind = 6,          // -MsgType is missing
  kNoDialog = 7,        // the dialog could not be shown, for example without a display
  kNoEvent = 8,         // the event that closes the installation dialog could not be made
  kTimeOut = 9,         // in automatic mode: the event was not set in time
  kBadSetting = 10,     // a value of KePIRes.ini is not a number of its range
};

/// The kinds of prompt with a dialog of their own. Every other number is a question too.
inline constexpr std::int32_t kCanRebootQuestion = 1, kRebootCountDown = 2, kInstallationDialog = 4;

/// Seconds of a countdown whose command line names none.
inline constexpr std::uint32_t kDefaultCountDown = 60;

struct Prompt {
  std::int32_t kind = 0;                // -MsgType
  std::optional<std::int32_t> seconds;  // -sec
  std::uint32_t rebootMessage = 0;      // -RebootMsg
};

/// The part of a command line after the program. `fileName` is the program's own file name; its path may precede it
/// without quotes, blanks and all, so the last place of the name counts. A command line that begins with a quote has
/// the program inside the quotes; one without the name begins with the program as its first word.
std::string_view SwitchesOf(std::string_view commandLine, std::string_view fileName) noexcept;

/// Reads the switches: any letter case, any order, blanks between them. None on success; `prompt` is then complete.
std::optional<ExitCode> ReadSwitches(std::string_view switches, Prompt& prompt) noexcept;

/// After how many seconds the prompt ends by itself; none when it waits without a limit.
///   countdown     its seconds, or kDefaultCountDown; a negative number counts as 0
///   installation  none
///   question      its seconds, when they are above 0
std::optional<std::uint32_t> TimeLimitOf(const Prompt& prompt) noexcept;

}  // namespace kepires
