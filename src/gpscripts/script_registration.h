// Registering a script in the machine's local group policy.
#pragma once

#include "frame/log_sink.h"
#include "gpscripts/policy_places.h"

namespace gpscripts {

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
KE_RESULT RegisterScript(frame::ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const Script& script);

}  // namespace gpscripts
