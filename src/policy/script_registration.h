// Listing, registering and removing the machine scripts of the local group policy, in all its stores at once.
//
// Functions write to the sink, which may be null.
#pragma once

#include <vector>

#include "policy/local_policy.h"

namespace policy {

/// A script and where it is stored.
struct ListedScript {
  ScriptKind kind;
  const char* place;  // "scripts.ini", or the name of the place in the registry
  bool local;         // of the local policy
  Script script;
};

/// Appends the scripts of both kinds from scripts.ini and from all places in the registry: a script once for each of
/// its places. Lists everything that can be read; the result is that of the first place that cannot, as `RemoveScripts`
/// returns it. For kelctl and the tests.
KE_RESULT ListScripts(ILogSink* sink, const PolicyPlaces& places, std::vector<ListedScript>& scripts);

/// Adds a script after the others of its kind: to scripts.ini, with a step of the policy's version, and to the places
/// in the registry that this Windows reads, so that it is effective at once. An existing script with the same program
/// and parameters is not added again; an interrupted call can be repeated. Copies nothing: the program must exist where
/// Windows looks for it. For kelctl and the tests.
///
/// KE_SUCCESS; KE_MISSING_ARGUMENT for an empty program; KE_OUT_OF_RANGE for a script that the policy cannot hold;
/// KE_STORE_UNUSABLE when scripts.ini or gpt.ini cannot be read, understood or written, and the registry is not changed
/// then; KE_REGISTRY_UNUSABLE when a key could not be changed. After the last two the script may be partly registered.
KE_RESULT RegisterScript(ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const Script& script);

/// The treatment of the files that removed scripts ran.
enum class ScriptFiles {
  kKept,
  kDeleted,  // those below the policy's own folder for the kind that no other script runs; at the next start if in use
};

/// Removes the matching scripts of a kind from all places in the registry, of this and of earlier releases, and from
/// scripts.ini, closes the gaps in each place with a removal, and steps the policy's version when scripts.ini has
/// changed. Scripts of another policy stay. No match is a success; an interrupted call can be repeated.
///
/// Every place is tried. When scripts.ini or gpt.ini exists but cannot be read, understood or written, only the
/// registry is changed.
///
/// KE_SUCCESS; KE_MISSING_ARGUMENT when both texts of `wanted` are empty; KE_REGISTRY_UNUSABLE when a key could not be
/// read or changed; KE_STORE_UNUSABLE when scripts.ini or gpt.ini could not be read, understood or written, or a script
/// file not be deleted. The first failure counts. Script files stay when a place could not be read or changed: it may
/// still name them.
KE_RESULT RemoveScripts(ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const ScriptMatch& wanted,
                        ScriptFiles files);

/// Removes the shutdown scripts of this machine whose parameters are exactly `parameters`: as `RemoveScripts`, and
/// KE_EXCEPTION for an unexpected failure. `text` is the program of the script, null or empty for any; with a `flag`
/// other than 0 the script file is deleted too. Null parameters are KE_MISSING_ARGUMENT.
KE_RESULT DeleteShutdownInformation(ILogSink* sink, const wchar_t* parameters, const wchar_t* text, int flag) noexcept;

}  // namespace policy
