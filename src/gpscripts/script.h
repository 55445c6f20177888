// A script of the machine's local group policy.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace gpscripts {

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

}  // namespace gpscripts
