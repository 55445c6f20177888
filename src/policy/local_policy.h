// The stores of the local group policy's machine scripts: registry keys, scripts.ini and gpt.ini. `script_registration`
// keeps them consistent.
//
// Functions with a sink, which may be null, write to it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "policy/log_sink.h"
#include "policy/policy_texts.h"

namespace policy {

/// Texts for functions of Windows, and from them: both are UTF-16.
inline std::wstring Wide(std::u16string_view text) { return {text.begin(), text.end()}; }
inline std::u16string Utf16(std::wstring_view text) { return {text.begin(), text.end()}; }

/// The locations of a machine's policy. `MachinePlaces` returns those of this machine; tests use others.
struct PolicyPlaces {
  HKEY root = HKEY_LOCAL_MACHINE;
  std::wstring prefix = {};  // of every key below the root: empty, or ending in a backslash
  std::wstring folder = {};  // the policy's folder GroupPolicy, without a backslash at the end
  std::uint32_t osCode = 0;  // OsCode of the Windows that reads the policy; 0, unidentified, counts as a new one
};

/// The policy of the running Windows.
PolicyPlaces MachinePlaces();

/// A key in which some release of Windows keeps the scripts of a kind: subkeys <policy object>\<script> of `path`.
struct RegistryPlace {
  std::wstring path;
  const char* name;     // for people
  bool used;            // by this release; the others are left over from an upgrade
  bool scriptOrder;     // a policy object has a value for the order of PowerShell scripts
  bool powerShellFlag;  // a script has a value that marks PowerShell scripts
};

std::vector<RegistryPlace> RegistryPlaces(const PolicyPlaces& places, ScriptKind kind);

/// The folders and files of the policy.
std::wstring MachineFolder(const PolicyPlaces& places);
std::wstring ScriptsFolder(const PolicyPlaces& places, ScriptKind kind);
std::wstring ScriptsIniPath(const PolicyPlaces& places);
std::wstring GptIniPath(const PolicyPlaces& places);

/// The full path of a program as `written` in a script of the local policy, without "." and ".."; a program without a
/// folder lies in the policy's folder for the kind. Surrounding quotation marks are removed, environment variables
/// expanded. None when it has no such path.
std::optional<std::wstring> ProgramPath(const PolicyPlaces& places, ScriptKind kind, std::u16string_view written);

/// True when the full path lies below the policy's folder for the kind.
bool LiesInScriptsFolder(const PolicyPlaces& places, ScriptKind kind, const std::wstring& path) noexcept;

/// True when both full paths are equal, ignoring letter case.
bool SamePath(const std::wstring& left, const std::wstring& right) noexcept;

// scripts.ini and gpt.ini. Results are KE_SUCCESS, or KE_STORE_UNUSABLE for a file that cannot be read or written, or
// whose meaning is unclear; it is not changed then.

/// scripts.ini as read. A missing file has no sections.
struct ScriptsFile {
  std::wstring path;
  std::string bytes;
  ScriptsIni ini;
};

/// Reads scripts.ini, in UTF-16 with a byte order mark or else in the system's code page.
KE_RESULT ReadScriptsFile(ILogSink* sink, const PolicyPlaces& places, ScriptsFile& file);

/// Removes the temporary files of both, left by killed processes.
void RemoveLeftovers(const PolicyPlaces& places);

/// Checks that both files can be written, where they exist, and that `StepPolicyVersion` will accept gpt.ini. Called
/// before anything is changed: without the step of the version Windows would not read a changed scripts.ini again, and
/// a repeated call would find nothing left to do. Then reads scripts.ini again: a program that held it open may have
/// changed it.
KE_RESULT PrepareChange(ILogSink* sink, const PolicyPlaces& places, ScriptsExtension extension, ScriptsFile& file);

/// Writes the changed `file.ini`, in UTF-16. Without sections it deletes the file, or writes it empty while another
/// program prevents the deletion. A new file is hidden, as in the policy editor of Windows.
KE_RESULT WriteScriptsFile(ILogSink* sink, const ScriptsFile& file);

/// Steps the version in gpt.ini. A missing gpt.ini is created only for `kListed`: without it Windows has no policy to
/// read again.
KE_RESULT StepPolicyVersion(ILogSink* sink, const PolicyPlaces& places, ScriptsExtension extension);

/// Adds the scripts extension to gpt.ini, with a step of the version, unless it is listed.
KE_RESULT ListScriptsExtension(ILogSink* sink, const PolicyPlaces& places);

// The scripts of one registry place. Results are KE_SUCCESS, also for a missing key, which holds nothing, or
// KE_REGISTRY_UNUSABLE for a key that cannot be opened, read or changed, mostly for lack of rights.

/// A script of a policy object.
struct PlacedScript {
  Script script;
  bool local;  // of the local policy; else of another one, such as the domain's
};

/// Appends the scripts of all policy objects, in their order.
KE_RESULT ReadScripts(ILogSink* sink, HKEY root, const RegistryPlace& place, std::vector<PlacedScript>& scripts);

/// Adds a script after the others of the local policy, unless the same script exists. A missing local policy is
/// created after the other policy objects. `machineFolder` is where the policy's files are.
KE_RESULT AddScript(ILogSink* sink, HKEY root, const RegistryPlace& place, const std::wstring& machineFolder,
                    const Script& script);

/// Deletes the matching scripts of the local policy, appends them to `removed`, and closes the gaps in the numbers of
/// the others. A local policy without scripts is deleted, and the gap in the numbers of the policy objects closed.
/// Without a match gaps stay, except those of an earlier call that was interrupted, which is finished. Objects of other
/// policies change at most their number.
KE_RESULT RemoveMatching(ILogSink* sink, HKEY root, const RegistryPlace& place, const ScriptMatch& wanted,
                         std::vector<Script>& removed);

}  // namespace policy
