// The texts of the local group policy's files, scripts.ini and gpt.ini: parsing, changing and writing them. No call of
// Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace policy {

/// When a machine script runs.
enum class ScriptKind { kStartup, kShutdown };

inline constexpr ScriptKind kScriptKinds[] = {ScriptKind::kStartup, ScriptKind::kShutdown};

/// The name of the kind in the policy: of its keys, section and folder.
constexpr std::u16string_view NameOf(ScriptKind kind) noexcept {
  return kind == ScriptKind::kStartup ? u"Startup" : u"Shutdown";
}

/// A program with its parameters. A program without a folder lies in the policy's folder for the kind.
struct Script {
  std::u16string program;
  std::u16string parameters;

  bool operator==(const Script&) const = default;
};

inline constexpr std::size_t kLongestProgram = 259;      // characters
inline constexpr std::size_t kLongestParameters = 2047;  // characters

/// True when the policy can hold the script: neither text is too long or has a control character, which could forge
/// lines of scripts.ini.
bool FitsPolicy(const Script& script) noexcept;

/// Selects the scripts with exactly these parameters and this program; an empty program selects any.
struct ScriptMatch {
  std::u16string parameters;
  std::u16string program = {};
};

bool Matches(const Script& script, const ScriptMatch& wanted) noexcept;

/// The number in the name of a key or entry: at most nine digits without a leading zero. None for any other text.
std::optional<std::uint32_t> EntryNumber(std::u16string_view text) noexcept;

// scripts.ini: sections [Startup] and [Shutdown] hold a pair of lines "<n>CmdLine=program" and "<n>Parameters=text" for
// each script, numbered from 0. Readers stop at the first missing number.

/// A longer text is refused, in characters.
inline constexpr std::size_t kLongestScriptsIni = std::size_t{512} * 1024;

/// A section, unchanged. Lines that belong to no script keep their place.
struct ScriptsSection {
  std::u16string head;                // the line "[name]" with its end; empty for the lines before the first section
  std::vector<std::u16string> lines;  // with their ends
};

struct ScriptsIni {
  std::vector<ScriptsSection> sections = {{}};  // the first one always exists, and has no head
};

/// None for a text that must not be changed, because its meaning is unclear: too long, with control characters, or with
/// two sections of one kind, of which Windows reads only one.
std::optional<ScriptsIni> ParseScriptsIni(std::u16string_view text);

/// The text again; of an unchanged model exactly the parsed one.
std::u16string TextOf(const ScriptsIni& ini);

/// The scripts of a kind in the order of their numbers, also those after a missing number. Texts are those that the
/// profile functions of Windows return.
std::vector<Script> ScriptsOf(const ScriptsIni& ini, ScriptKind kind);

/// Adds a script, which must fit the policy, after the others of its kind, and closes gaps in their numbers.
void AddScript(ScriptsIni& ini, ScriptKind kind, const Script& script);

/// Removes the scripts that match, as Windows reads them or as they are written, numbers the others without gaps, and
/// removes a section that has become empty. Returns the removed scripts; without any the model is unchanged.
std::vector<Script> RemoveMatching(ScriptsIni& ini, ScriptKind kind, const ScriptMatch& wanted);

/// False when no section is left: Windows would read nothing.
bool HasSections(const ScriptsIni& ini) noexcept;

/// Decodes UTF-16, low byte first, with a byte order mark. None without the mark, and for half a character.
std::optional<std::u16string> DecodeUtf16(std::string_view bytes);

/// Encodes the same way, with the mark.
std::string EncodeUtf16(std::u16string_view text);

// gpt.ini: the version of a group policy object, and the list of extensions that read it.

/// A longer text is refused, in characters.
inline constexpr std::size_t kLongestGptIni = std::size_t{64} * 1024;

/// The change to the list of machine extensions.
enum class ScriptsExtension {
  kAsItIs,
  kListed,  // the scripts extension with its tool is added, unless it is listed
};

/// The text with the machine's version, the low word, increased: Windows reads the policy's files again only then.
/// 65535 is followed by 1, because version 0 means a policy that was never edited; the high word, the users' version,
/// stays. A missing version counts as 0. Quotation marks around a value are read as Windows reads them, and stay.
/// Everything else stays as it is, byte for byte; missing lines are added.
///
/// None for a text that must not be changed, because its meaning is unclear: too long, with control characters, a
/// version that is no 32-bit decimal number, or a malformed list of extensions and tools.
std::optional<std::string> StepMachineVersion(std::string_view text, ScriptsExtension extension);

/// True when the list of machine extensions names the scripts extension with its tool.
bool ListsScriptsExtension(std::string_view text);

/// The text for a policy without gpt.ini: version 1, with the scripts extension.
std::string NewGptIni();

}  // namespace policy
