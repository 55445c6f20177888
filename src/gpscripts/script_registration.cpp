#include "gpscripts/script_registration.h"

#include <algorithm>

#include "gpscripts/registry_scripts.h"
#include "gpscripts/scripts_file.h"
#include "gpscripts/sink_call.h"

namespace gpscripts {
namespace {

KE_RESULT AddToFiles(frame::ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const Script& script) {
  RemoveLeftovers(places);
  ScriptsFile file;
  if (const KE_RESULT read = ReadScriptsFile(sink, places, file); read != KE_SUCCESS) return read;
  const auto isKnown = [&] { return std::ranges::count(ScriptsOf(file.ini, kind), script) > 0; };
  if (isKnown()) return ListScriptsExtension(sink, places);
  const KE_RESULT prepared = PrepareChange(sink, places, ScriptsExtension::kListed, file);
  if (prepared != KE_SUCCESS) return prepared;
  if (isKnown()) return ListScriptsExtension(sink, places);
  AddScript(file.ini, kind, script);
  const KE_RESULT written = WriteScriptsFile(sink, file);
  return written == KE_SUCCESS ? StepPolicyVersion(sink, places, ScriptsExtension::kListed) : written;
}

KE_RESULT AddToRegistry(frame::ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const Script& script) {
  KE_RESULT result = KE_SUCCESS;
  for (const RegistryPlace& place : RegistryPlaces(places, kind)) {
    const KE_RESULT added =
        place.used ? AddScript(sink, places.root, place, MachineFolder(places), script) : KE_RESULT{KE_SUCCESS};
    if (result == KE_SUCCESS) result = added;
  }
  return result;
}

}  // namespace

KE_RESULT RegisterScript(frame::ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const Script& script) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"kind", NameOf(kind));
  call.Parameter(L"program", script.program.c_str());
  call.Parameter(L"parameters", script.parameters.c_str());
  if (script.program.empty()) return call.End(KE_MISSING_ARGUMENT);
  if (!FitsPolicy(script)) return call.End(KE_OUT_OF_RANGE);
  const KE_RESULT files = AddToFiles(sink, places, kind, script);
  return call.End(files == KE_SUCCESS ? AddToRegistry(sink, places, kind, script) : files);
}

}  // namespace gpscripts
