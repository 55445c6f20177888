// The text of gpt.ini: the version of a group policy object, and the extensions that read it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace policy {

/// A text of more characters than this is refused.
inline constexpr std::size_t kLongestGptIni = std::size_t{64} * 1024;

/// What becomes of the list of machine extensions.
enum class ScriptsExtension {
  kAsItIs,
  kListed,  // the scripts extension with its tool is put into the list, unless it is there
};

/// The text with the machine's version, the low word, one higher: the platform reads the policy's files again only
/// then. 65535 is followed by 1, because the platform takes version 0 for a policy that was never edited; the high
/// word, the users' version, stays. A missing version counts as 0. Quotation marks around a value are read as the
/// platform reads them, and stay. Everything else stays as it is, byte for byte; what is missing is added.
///
/// None for a text that must be left alone because it cannot be understood: too long, with control characters, a
/// version that is no 32-bit decimal number, or a list that is none of extensions and tools.
std::optional<std::string> StepMachineVersion(std::string_view text, ScriptsExtension extension);

/// True when the list of machine extensions names the scripts extension with its tool.
bool ListsScriptsExtension(std::string_view text);

/// The text for a policy that has no gpt.ini yet: version 1, with the scripts extension.
std::string NewGptIni();

}  // namespace policy
