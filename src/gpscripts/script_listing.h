// The scripts of the machine, wherever they are noted.
#pragma once

#include <string>
#include <vector>

#include "frame/log_sink.h"
#include "gpscripts/policy_places.h"

namespace gpscripts {

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
KE_RESULT ListScripts(frame::ILogSink* sink, const PolicyPlaces& places, std::vector<ListedScript>& scripts);

}  // namespace gpscripts
