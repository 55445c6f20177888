#include "gpscripts/script_listing.h"

#include "gpscripts/registry_scripts.h"
#include "gpscripts/scripts_file.h"

namespace gpscripts {

KE_RESULT ListScripts(frame::ILogSink* sink, const PolicyPlaces& places, std::vector<ListedScript>& scripts) {
  ScriptsFile file;
  KE_RESULT result = ReadScriptsFile(sink, places, file);
  for (const ScriptKind kind : kScriptKinds) {
    for (Script& script : ScriptsOf(file.ini, kind)) scripts.push_back({kind, "scripts.ini", true, std::move(script)});
    for (const RegistryPlace& place : RegistryPlaces(places, kind)) {
      std::vector<PlacedScript> found;
      const KE_RESULT read = ReadScripts(sink, places.root, place, found);
      if (result == KE_SUCCESS) result = read;
      for (PlacedScript& placed : found) scripts.push_back({kind, place.name, placed.local, std::move(placed.script)});
    }
  }
  return result;
}

}  // namespace gpscripts
