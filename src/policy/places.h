// Where the scripts of the machine's local group policy are kept.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "policy/scripts_ini.h"

namespace policy {

/// A machine's policy. `MachinePlaces` gives that of this machine; any other value names one apart from it.
struct PolicyPlaces {
  HKEY root = HKEY_LOCAL_MACHINE;
  std::wstring prefix = {};  // of every key below the root: empty, or ending in a backslash
  std::wstring folder = {};  // the policy's folder GroupPolicy, without a backslash at the end
  std::uint32_t osCode = 0;  // OsCode: where this release looks. 0, unidentified, is taken for a new one
};

/// The policy of the running Windows.
PolicyPlaces MachinePlaces();

/// A place in the registry where some release keeps the scripts of a kind: keys <policy object>\<script> below `path`.
struct RegistryPlace {
  std::wstring path;
  const char* name;      // for people
  bool used;             // by this release; others are left over from an upgrade
  bool scriptOrder;      // a policy object says in which order PowerShell scripts run
  bool tellsPowerShell;  // a script says whether it is one of PowerShell
};

/// All of them.
std::vector<RegistryPlace> RegistryPlaces(const PolicyPlaces& places, ScriptKind kind);

/// The folders and files of the policy.
std::wstring MachineFolder(const PolicyPlaces& places);
std::wstring ScriptsFolder(const PolicyPlaces& places);
std::wstring ScriptsFolder(const PolicyPlaces& places, ScriptKind kind);
std::wstring ScriptsIniPath(const PolicyPlaces& places);
std::wstring GptIniPath(const PolicyPlaces& places);

// The file that a script runs.

/// The full path of the program that is `written` in a script of the local policy, without "." and ".."; a program
/// without a folder of its own lies in the policy's folder for the kind. Quotes around it do not count, and its
/// environment variables are looked up. None when it has no such path.
std::optional<std::wstring> ProgramPath(const PolicyPlaces& places, ScriptKind kind, const std::wstring& written);

/// True when the full path lies below the policy's folder for the kind.
bool LiesInScriptsFolder(const PolicyPlaces& places, ScriptKind kind, const std::wstring& path) noexcept;

/// True when both full paths name the same file, as far as their letters say so.
bool SamePath(const std::wstring& left, const std::wstring& right) noexcept;

}  // namespace policy
