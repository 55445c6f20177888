// A script of the machine's local group policy.
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

/// What the kind is called wherever the policy names it: key, section and folder.
constexpr const wchar_t* NameOf(ScriptKind kind) noexcept {
  return kind == ScriptKind::kStartup ? L"Startup" : L"Shutdown";
}

/// A program with its parameters. A program without a folder lies in the policy's folder for the kind.
struct Script {
  std::wstring program;
  std::wstring parameters;

  bool operator==(const Script&) const = default;
};

inline constexpr std::size_t kLongestProgram = 259;      // characters
inline constexpr std::size_t kLongestParameters = 2047;  // characters

/// True when the policy can hold the script: neither text is too long or has a control character, which could forge
/// lines of scripts.ini.
bool FitsPolicy(const Script& script) noexcept;

/// Which scripts are meant: those with exactly these parameters, and of this program; an empty program means any.
struct ScriptMatch {
  std::wstring parameters;
  std::wstring program = {};
};

bool Matches(const Script& script, const ScriptMatch& wanted) noexcept;

/// The number that a key or entry name stands for, written as the platform writes it: digits without a leading zero, at
/// most nine. None for any other text.
std::optional<std::uint32_t> EntryNumber(std::wstring_view text) noexcept;

// The text of scripts.ini: which scripts the local group policy has, as its editor stores them.
//
// Sections [Startup] and [Shutdown] hold a pair of lines "<n>CmdLine=program" and "<n>Parameters=text" for each script,
// numbered from 0. Readers stop at the first number that is missing.

/// A text of more characters than this is refused.
inline constexpr std::size_t kLongestScriptsIni = std::size_t{512} * 1024;

/// A section as it stands. Lines that are no part of a script are kept, and keep their place.
struct ScriptsSection {
  std::wstring head;                // the line "[name]" with its end; empty for what stands before the first section
  std::vector<std::wstring> lines;  // with their ends
};

struct ScriptsIni {
  std::vector<ScriptsSection> sections = {{}};  // the first one has no head, and is always there
};

/// None for a text that must be left alone because it cannot be understood: too long, with control characters, or with
/// a kind's section twice, of which the platform sees only one.
std::optional<ScriptsIni> ParseScriptsIni(std::wstring_view text);

/// The text again; of an unchanged model exactly the one that was parsed.
std::wstring TextOf(const ScriptsIni& ini);

/// The scripts of a kind in the order of their numbers, also behind a missing number. Texts are as the platform's
/// profile functions give them: without blanks around them, then without one pair of quotation marks.
std::vector<Script> ScriptsOf(const ScriptsIni& ini, ScriptKind kind);

/// Adds a script, which must fit the policy, behind the others of its kind, and closes gaps in their numbers.
void AddScript(ScriptsIni& ini, ScriptKind kind, const Script& script);

/// Takes out the scripts that match, as the platform reads them or as they are written, numbers the others without
/// gaps, and takes out a section in which nothing is left. Returns what was taken out; the model is unchanged when that
/// is nothing.
std::vector<Script> TakeOutScripts(ScriptsIni& ini, ScriptKind kind, const ScriptMatch& wanted);

/// False when no section is left, and with it nothing that the platform would read.
bool HasSections(const ScriptsIni& ini) noexcept;

/// The characters of a file in UTF-16, low byte first, with its byte order mark; none when the mark is missing or half
/// a character is left over.
std::optional<std::wstring> DecodeUtf16(std::string_view bytes);

/// The same file again, with its mark.
std::string EncodeUtf16(std::wstring_view text);

}  // namespace policy
