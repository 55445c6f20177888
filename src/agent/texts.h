// Texts of the agent's events and prompts. No call of Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace agent {

/// Bytes of the longest description, with its terminating zero.
inline constexpr std::size_t kDescriptionSize = 512;

/// The description made of a string resource, which is data and never reaches a C format function. Without "%s" it
/// stays unchanged. Otherwise the first "%s" becomes `insert`, "%%" one percent sign, and everything else stays. Cut at
/// `kDescriptionSize` less the zero.
std::string DescriptionText(std::string_view resource, std::string_view insert);

// The command lines of the prompt program.

/// The kinds of prompt with an export of their own.
inline constexpr std::int32_t kCanRebootPrompt = 1, kRebootCountDownPrompt = 2, kInstallDialogPrompt = 4;

/// The switches of a prompt of any kind, with a leading blank; without seconds their switch is left out.
std::string PromptSwitches(std::int32_t kind, std::optional<std::int32_t> seconds = std::nullopt);

/// The switches of the installation dialog, with a leading blank.
std::string InstallDialogSwitches(std::uint32_t rebootMessage);

}  // namespace agent
