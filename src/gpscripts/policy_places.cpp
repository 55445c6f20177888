#include "gpscripts/policy_places.h"

#include "frame/os_identification.h"

namespace gpscripts {

PolicyPlaces MachinePlaces() {
  wchar_t windows[MAX_PATH] = {};
  GetSystemWindowsDirectoryW(windows, MAX_PATH);
  return {.folder = std::wstring(windows) + L"\\System32\\GroupPolicy", .osCode = frame::GetOsCode()};
}

std::vector<RegistryPlace> RegistryPlaces(const PolicyPlaces& places, ScriptKind kind) {
  const bool vista = places.osCode == 0 || places.osCode >= frame::kWindowsVista;
  const bool windows7 = places.osCode == 0 || places.osCode >= frame::kWindows7;
  const auto path = [&](const wchar_t* key) { return places.prefix + key + NameOf(kind); };
  return {
      {path(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Group Policy\\Scripts\\"), "scripts", vista, windows7,
       windows7},
      {path(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Group Policy\\State\\Machine\\Scripts\\"), "state", vista,
       windows7, false},
      {path(L"SOFTWARE\\Policies\\Microsoft\\Windows\\System\\Scripts\\"), "policies", !vista, false, false},
  };
}

std::wstring MachineFolder(const PolicyPlaces& places) { return places.folder + L"\\Machine"; }

std::wstring ScriptsFolder(const PolicyPlaces& places) { return MachineFolder(places) + L"\\Scripts"; }

std::wstring ScriptsFolder(const PolicyPlaces& places, ScriptKind kind) {
  return ScriptsFolder(places) + L"\\" + NameOf(kind);
}

std::wstring ScriptsIniPath(const PolicyPlaces& places) { return ScriptsFolder(places) + L"\\scripts.ini"; }

std::wstring GptIniPath(const PolicyPlaces& places) { return places.folder + L"\\gpt.ini"; }

}  // namespace gpscripts
