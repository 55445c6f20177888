#include "policy/script_registration.h"

#include <algorithm>

#include "policy/system_files.h"

namespace policy {

namespace {

KE_RESULT AddToFiles(ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const Script& script) {
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

KE_RESULT AddToRegistry(ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const Script& script) {
  KE_RESULT result = KE_SUCCESS;
  for (const RegistryPlace& place : RegistryPlaces(places, kind)) {
    if (!place.used) continue;
    const KE_RESULT added = AddScript(sink, places.root, place, MachineFolder(places), script);
    if (result == KE_SUCCESS) result = added;
  }
  return result;
}

// The state of one removal.
struct Removal {
  ILogSink* sink;
  const PolicyPlaces& places;
  ScriptKind kind;
  std::vector<Script> removed = {};
  KE_RESULT result = KE_SUCCESS;

  void Note(KE_RESULT step) noexcept {
    if (result == KE_SUCCESS) result = step;
  }
};

// The paths that any script still runs. Programs of other policies without a folder lie in folders of their own.
std::vector<std::wstring> PathsInUse(Removal& removal, const ScriptsIni& ini) {
  std::vector<std::wstring> paths;
  const auto add = [&](ScriptKind kind, const Script& script) {
    if (auto path = ProgramPath(removal.places, kind, script.program)) paths.push_back(std::move(*path));
  };
  for (const ScriptKind kind : kScriptKinds) {
    for (const Script& script : ScriptsOf(ini, kind)) add(kind, script);
    std::vector<PlacedScript> scripts;
    for (const RegistryPlace& place : RegistryPlaces(removal.places, kind))
      removal.Note(ReadScripts(removal.sink, removal.places.root, place, scripts));
    for (const auto& [script, local] : scripts) {
      if (local || script.program.find(u'\\') != script.program.npos) add(kind, script);
    }
  }
  return paths;
}

void DeleteFiles(Removal& removal, const ScriptsIni& ini) {
  const auto inUse = PathsInUse(removal, ini);
  if (removal.result != KE_SUCCESS) return;
  for (const Script& script : removal.removed) {
    const auto path = ProgramPath(removal.places, removal.kind, script.program);
    if (!path || !LiesInScriptsFolder(removal.places, removal.kind, *path)) continue;
    if (std::ranges::any_of(inUse, [&](const std::wstring& used) { return SamePath(used, *path); })) continue;
    removal.Note(DeleteFileNowOrAtReboot(removal.sink, *path));
  }
}

void RemoveFromFiles(Removal& removal, const ScriptMatch& wanted, ScriptFiles files) {
  RemoveLeftovers(removal.places);
  // Also when the registry had nothing: Windows would restore the script from the file.
  ScriptsFile file;
  removal.Note(ReadScriptsFile(removal.sink, removal.places, file));
  auto removed = RemoveMatching(file.ini, removal.kind, wanted);
  if (!removed.empty()) {
    const KE_RESULT prepared = PrepareChange(removal.sink, removal.places, ScriptsExtension::kAsItIs, file);
    removal.Note(prepared);
    if (prepared != KE_SUCCESS) return;
    removed = RemoveMatching(file.ini, removal.kind, wanted);
  }
  removal.removed.insert(removal.removed.end(), removed.begin(), removed.end());
  // scripts.ini is written after the script file is deleted: an interrupted removal finds its name there again.
  if (files == ScriptFiles::kDeleted && !removal.removed.empty()) DeleteFiles(removal, file.ini);
  if (removed.empty()) return;
  const KE_RESULT written = WriteScriptsFile(removal.sink, file);
  removal.Note(written);
  if (written == KE_SUCCESS) removal.Note(StepPolicyVersion(removal.sink, removal.places, ScriptsExtension::kAsItIs));
}

}  // namespace

KE_RESULT ListScripts(ILogSink* sink, const PolicyPlaces& places, std::vector<ListedScript>& scripts) {
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

KE_RESULT RegisterScript(ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const Script& script) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"kind", Wide(NameOf(kind)).c_str());
  call.Parameter(L"program", Wide(script.program).c_str());
  call.Parameter(L"parameters", Wide(script.parameters).c_str());
  if (script.program.empty()) return call.End(KE_MISSING_ARGUMENT);
  if (!FitsPolicy(script)) return call.End(KE_OUT_OF_RANGE);
  const KE_RESULT files = AddToFiles(sink, places, kind, script);
  return call.End(files == KE_SUCCESS ? AddToRegistry(sink, places, kind, script) : files);
}

KE_RESULT RemoveScripts(ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const ScriptMatch& wanted,
                        ScriptFiles files) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"kind", Wide(NameOf(kind)).c_str());
  call.Parameter(L"parameters", Wide(wanted.parameters).c_str());
  call.Parameter(L"program", Wide(wanted.program).c_str());
  if (wanted.parameters.empty() && wanted.program.empty()) return call.End(KE_MISSING_ARGUMENT);
  Removal removal{sink, places, kind};
  for (const RegistryPlace& place : RegistryPlaces(places, kind))
    removal.Note(RemoveMatching(sink, places.root, place, wanted, removal.removed));
  RemoveFromFiles(removal, wanted, files);
  return call.End(removal.result);
}

KE_RESULT DeleteShutdownInformation(ILogSink* sink, const wchar_t* parameters, const wchar_t* text, int flag) noexcept {
  try {
    const SinkCall call(sink, __func__);
    call.Parameter(L"parameters", parameters);
    call.Parameter(L"text", text);
    call.Parameter(L"flag", flag);
    if (parameters == nullptr) return call.End(KE_MISSING_ARGUMENT);
    try {
      return call.End(RemoveScripts(sink, MachinePlaces(), ScriptKind::kShutdown,
                                    {Utf16(parameters), Utf16(text ? text : L"")},
                                    flag != 0 ? ScriptFiles::kDeleted : ScriptFiles::kKept));
    } catch (...) {
      return call.End(KE_EXCEPTION);
    }
  } catch (...) {
    return KE_EXCEPTION;  // no memory for the name in the sink's lines
  }
}

}  // namespace policy
