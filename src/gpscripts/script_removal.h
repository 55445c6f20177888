// Removing scripts from the machine's local group policy.
#pragma once

#include "frame/log_sink.h"
#include "gpscripts/policy_places.h"

namespace gpscripts {

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
KE_RESULT RemoveScripts(frame::ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const ScriptMatch& wanted,
                        ScriptFiles files);

/// Removes the shutdown scripts of this machine whose parameters are exactly `parameters`: as `RemoveScripts`, and
/// KE_EXCEPTION for an unexpected failure. `text` is the program of the script, null or empty for any; with a `flag`
/// other than 0 the script file is deleted too. Null parameters are KE_MISSING_ARGUMENT.
KE_RESULT DeleteShutdownInformation(frame::ILogSink* sink, const wchar_t* parameters, const wchar_t* text,
                                    int flag) noexcept;

}  // namespace gpscripts
