// How the text of an event description is made from a string resource. The resource is data: no C format function ever
// sees it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace agent {

/// Bytes of the longest description, with its terminating zero.
inline constexpr std::size_t kDescriptionSize = 512;

/// The description that a resource text gives. One without "%s" stays as it stands. In one that contains it, the first
/// "%s" becomes `insert`, "%%" one percent sign, and everything else stays. Cut at `kDescriptionSize` less the zero.
std::string DescriptionText(std::string_view resource, std::string_view insert);

// The command lines of the program that asks the user. No platform call.

/// The kinds of prompt that this library names itself.
inline constexpr std::int32_t kCanRebootPrompt = 1, kRebootCountDownPrompt = 2, kInstallDialogPrompt = 4;

/// The path of the prompt program, KePIRes.exe, in the agent's folder.
std::string PromptProgram(std::string_view moduleDirectory);

/// The switches of a prompt of any kind, with a blank in front; its seconds are named only when there are some.
std::string PromptSwitches(std::int32_t kind, std::optional<std::int32_t> seconds = std::nullopt);

/// The switches of the installation dialog, with a blank in front.
std::string InstallDialogSwitches(std::uint32_t rebootMessage);

}  // namespace agent
