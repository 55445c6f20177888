#include "gpscripts/script_removal.h"

#include <algorithm>

#include "gpscripts/delete_at_reboot.h"
#include "gpscripts/registry_scripts.h"
#include "gpscripts/script_file.h"
#include "gpscripts/scripts_file.h"
#include "gpscripts/sink_call.h"

namespace gpscripts {
namespace {

// One removal on its way.
struct Removal {
  frame::ILogSink* sink;
  const PolicyPlaces& places;
  ScriptKind kind;
  std::vector<Script> taken = {};
  KE_RESULT result = KE_SUCCESS;

  void Note(KE_RESULT step) noexcept {
    if (result == KE_SUCCESS) result = step;
  }
};

void TakeOutOfRegistry(Removal& removal, const ScriptMatch& wanted) {
  for (const RegistryPlace& place : RegistryPlaces(removal.places, removal.kind))
    removal.Note(TakeOutScripts(removal.sink, removal.places.root, place, wanted, removal.taken));
}

// The paths that any script still runs. Programs of other policies without a folder lie in folders of their own.
std::vector<std::wstring> PathsInUse(Removal& removal, const ScriptsIni& ini) {
  std::vector<std::wstring> paths;
  const auto add = [&](ScriptKind kind, const std::wstring& program) {
    if (auto path = ProgramPath(removal.places, kind, program)) paths.push_back(std::move(*path));
  };
  for (const ScriptKind kind : kScriptKinds) {
    for (const Script& script : ScriptsOf(ini, kind)) add(kind, script.program);
    std::vector<PlacedScript> scripts;
    for (const RegistryPlace& place : RegistryPlaces(removal.places, kind))
      removal.Note(ReadScripts(removal.sink, removal.places.root, place, scripts));
    for (const PlacedScript& placed : scripts) {
      if (placed.local || placed.script.program.find(L'\\') != std::wstring::npos) add(kind, placed.script.program);
    }
  }
  return paths;
}

void DeleteFiles(Removal& removal, const ScriptsIni& ini) {
  const auto inUse = PathsInUse(removal, ini);
  if (removal.result != KE_SUCCESS) return;
  for (const Script& script : removal.taken) {
    const auto path = ProgramPath(removal.places, removal.kind, script.program);
    if (!path || !LiesInScriptsFolder(removal.places, removal.kind, *path)) continue;
    if (std::ranges::any_of(inUse, [&](const std::wstring& used) { return SamePath(used, *path); })) continue;
    removal.Note(DeleteFileNowOrAtReboot(removal.sink, *path));
  }
}

}  // namespace

KE_RESULT RemoveScripts(frame::ILogSink* sink, const PolicyPlaces& places, ScriptKind kind, const ScriptMatch& wanted,
                        ScriptFiles files) {
  const SinkCall call(sink, __func__);
  call.Parameter(L"kind", NameOf(kind));
  call.Parameter(L"parameters", wanted.parameters.c_str());
  call.Parameter(L"program", wanted.program.c_str());
  if (wanted.parameters.empty() && wanted.program.empty()) return call.End(KE_MISSING_ARGUMENT);

  Removal removal{sink, places, kind};
  TakeOutOfRegistry(removal, wanted);
  RemoveLeftovers(places);
  // Also when the registry had nothing: the policy engine would bring the script back from the file.
  ScriptsFile file;
  removal.Note(ReadScriptsFile(sink, places, file));
  auto taken = TakeOutScripts(file.ini, kind, wanted);
  if (!taken.empty()) {
    const KE_RESULT prepared = PrepareChange(sink, places, ScriptsExtension::kAsItIs, file);
    removal.Note(prepared);
    if (prepared != KE_SUCCESS) return call.End(removal.result);
    taken = TakeOutScripts(file.ini, kind, wanted);
  }
  removal.taken.insert(removal.taken.end(), taken.begin(), taken.end());
  // scripts.ini is written after the script file is gone: a removal that ends in between finds its name there again.
  if (files == ScriptFiles::kDeleted && !removal.taken.empty()) DeleteFiles(removal, file.ini);
  if (!taken.empty()) {
    const KE_RESULT written = WriteScriptsFile(sink, file);
    removal.Note(written);
    if (written == KE_SUCCESS) removal.Note(StepPolicyVersion(sink, places, ScriptsExtension::kAsItIs));
  }
  return call.End(removal.result);
}

KE_RESULT DeleteShutdownInformation(frame::ILogSink* sink, const wchar_t* parameters, const wchar_t* text,
                                    int flag) noexcept {
  try {
    const SinkCall call(sink, __func__);
    call.Parameter(L"parameters", parameters);
    call.Parameter(L"text", text);
    call.Parameter(L"flag", flag);
    if (parameters == nullptr) return call.End(KE_MISSING_ARGUMENT);
    try {
      return call.End(RemoveScripts(sink, MachinePlaces(), ScriptKind::kShutdown, {parameters, text ? text : L""},
                                    flag != 0 ? ScriptFiles::kDeleted : ScriptFiles::kKept));
    } catch (...) {
      return call.End(KE_EXCEPTION);
    }
  } catch (...) {
    return KE_EXCEPTION;  // not even the sink's line could be made
  }
}

}  // namespace gpscripts
