// Where the scripts of the machine's local group policy are kept.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "gpscripts/script.h"

namespace gpscripts {

/// A machine's policy. `MachinePlaces` gives that of this machine; any other value names one apart from it.
struct PolicyPlaces {
  HKEY root = HKEY_LOCAL_MACHINE;
  std::wstring prefix = {};  // of every key below the root: empty, or ending in a backslash
  std::wstring folder = {};  // the policy's folder GroupPolicy, without a backslash at the end
  std::uint32_t osCode = 0;  // frame::OsCode: where this release looks. 0, unidentified, is taken for a new one
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

}  // namespace gpscripts
