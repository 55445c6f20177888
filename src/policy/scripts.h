// The scripts of the machine, wherever they are noted.
#pragma once

#include <string>
#include <vector>

#include "policy/log_sink.h"
#include "policy/places.h"

namespace policy {

/// A script and where it is noted.
struct ListedScript {
  ScriptKind kind;
  const char* place;  // "scripts.ini", or the name of the place in the registry
  bool local;         // of the local policy
  Script script;
};

/// Appends the scripts of both kinds from scripts.ini and from all places in the registry, so that each script is there
/// once for every place. What can be read is listed; the result tells of the first place that could not, as
/// `RemoveScripts` does.
KE_RESULT ListScripts(ILogSink* sink, const PolicyPlaces& places, std::vector<ListedScript>& scripts);

// Registering a script in the machine's local group policy.

/// Adds a startup or shutdown script behind the others of its kind: to scripts.ini, with a step of the policy's
/// version, and to the places in the registry that this release looks in, so that it counts at once. A script that is
/// there already, with the same program and parameters, is not added again; a call that was interrupted can be
/// repeated.
///
/// Writes to the sink, which may be null. Nothing is copied: the program must be where it will be looked for.
///
/// KE_SUCCESS; KE_MISSING_ARGUMENT for an empty program; KE_OUT_OF_RANGE for a script that the policy cannot hold;
/// KE_STORE_UNUSABLE when scripts.ini or gpt.ini cannot be read, understood or written, and the registry is left alone
/// then; KE_REGISTRY_UNUSABLE when a key could not be changed. After the last two the script may be there in part.
KE_RESULT RegisterScript(ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const Script& script);

// Removing scripts from the machine's local group policy.

/// What becomes of the files that removed scripts ran.
enum class ScriptFiles {
  kKept,
  kDeleted,  // those below the policy's own folder for the kind that no other script runs; at the next start if in use
};

/// Removes the scripts of a kind that match from all places in the registry, of this and of earlier releases, and from
/// scripts.ini, closes up the numbers of the others in each place from which one was removed, and steps the policy's
/// version when scripts.ini has changed. What another policy has stays. Nothing found is a success; a call that was
/// interrupted can be repeated.
///
/// Every place is tried. Writes to the sink, which may be null.
///
/// When scripts.ini or gpt.ini is there but cannot be read, understood or written, only the registry is changed.
///
/// KE_SUCCESS; KE_MISSING_ARGUMENT when both texts of `wanted` are empty; KE_REGISTRY_UNUSABLE when a key could not be
/// read or changed; KE_STORE_UNUSABLE when scripts.ini or gpt.ini could not be read, understood or written, or a script
/// file not be deleted. The first failure counts. Script files stay when a place could not be read or changed: it may
/// name them still.
KE_RESULT RemoveScripts(ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const ScriptMatch& wanted,
                        ScriptFiles files);

/// Removes the shutdown scripts of this machine whose parameters are exactly `parameters`: as `RemoveScripts`, and
/// KE_EXCEPTION for an unexpected failure. `text` is the program of the script, null or empty for any; with a `flag`
/// other than 0 the script file is deleted too. Null parameters are KE_MISSING_ARGUMENT.
KE_RESULT DeleteShutdownInformation(ILogSink* sink, const wchar_t* parameters, const wchar_t* text, int flag) noexcept;

}  // namespace policy
