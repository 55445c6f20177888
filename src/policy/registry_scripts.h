// The scripts of one place in the registry.
//
// Functions write to the sink, which may be null, and return KE_SUCCESS or KE_REGISTRY_UNUSABLE: a key could not be
// opened, read or changed, mostly for lack of rights. A missing key holds nothing and is no failure.
#pragma once

#include <vector>

#include "policy/log_sink.h"
#include "policy/places.h"

namespace policy {

/// A script as the registry has it.
struct PlacedScript {
  Script script;
  bool local;  // of the local policy; else of another one, such as the domain's
};

/// Appends the scripts of all policy objects, in their order.
KE_RESULT ReadScripts(ILogSink* sink, HKEY root, const RegistryPlace& place, std::vector<PlacedScript>& scripts);

/// Adds a script behind the others of the local policy, which is created behind the other policy objects when it is
/// missing. Nothing happens when the same script is there already. `machineFolder` is where the policy's files are.
KE_RESULT AddScript(ILogSink* sink, HKEY root, const RegistryPlace& place, const std::wstring& machineFolder,
                    const Script& script);

/// Deletes the matching scripts of the local policy, appends them to `taken`, and closes up the numbers of the others.
/// A local policy that has no scripts left is deleted, and the numbers of the other policy objects are closed up. When
/// nothing matches, the numbers stay as they are, gaps included, but an earlier call that was interrupted is brought to
/// its end. Objects of other policies are renumbered at most.
KE_RESULT TakeOutScripts(ILogSink* sink, HKEY root, const RegistryPlace& place, const ScriptMatch& wanted,
                         std::vector<Script>& taken);

}  // namespace policy
