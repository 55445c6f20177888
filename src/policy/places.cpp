#include "policy/places.h"

#include <iterator>

#include "policy/os_identification.h"

namespace policy {

PolicyPlaces MachinePlaces() {
  wchar_t windows[MAX_PATH] = {};
  GetSystemWindowsDirectoryW(windows, MAX_PATH);
  return {.folder = std::wstring(windows) + L"\\System32\\GroupPolicy", .osCode = GetOsCode()};
}

std::vector<RegistryPlace> RegistryPlaces(const PolicyPlaces& places, ScriptKind kind) {
  const bool vista = places.osCode == 0 || places.osCode >= kWindowsVista;
  const bool windows7 = places.osCode == 0 || places.osCode >= kWindows7;
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

namespace {

bool SameLetters(const wchar_t* left, const wchar_t* right, std::size_t length) noexcept {
  const int count = static_cast<int>(length);
  return CompareStringOrdinal(left, count, right, count, TRUE) == CSTR_EQUAL;
}

bool IsFull(const std::wstring& path) noexcept {
  return path.starts_with(L'\\') || path.starts_with(L'/') || (path.size() > 1 && path[1] == L':');
}

// The program without quotes around it, with the values of its environment variables.
std::wstring Expanded(std::wstring program) {
  if (program.size() > 1 && program.front() == L'"' && program.back() == L'"') {
    program = program.substr(1, program.size() - 2);
  }
  std::wstring expanded(ExpandEnvironmentStringsW(program.c_str(), nullptr, 0), L'\0');
  const DWORD size = ExpandEnvironmentStringsW(program.c_str(), expanded.data(), static_cast<DWORD>(expanded.size()));
  if (size == 0 || size > expanded.size()) return program;
  expanded.resize(size - 1);
  return expanded;
}

}  // namespace

std::optional<std::wstring> ProgramPath(const PolicyPlaces& places, ScriptKind kind, const std::wstring& written) {
  const std::wstring program = Expanded(written);
  if (program.empty()) return std::nullopt;
  const std::wstring path = IsFull(program) ? program : ScriptsFolder(places, kind) + L"\\" + program;
  wchar_t full[MAX_PATH];
  const DWORD length = GetFullPathNameW(path.c_str(), std::size(full), full, nullptr);
  if (length == 0 || length >= std::size(full)) return std::nullopt;
  return std::wstring(full, length);
}

bool LiesInScriptsFolder(const PolicyPlaces& places, ScriptKind kind, const std::wstring& path) noexcept {
  const std::wstring folder = ScriptsFolder(places, kind) + L"\\";
  return path.size() > folder.size() && SameLetters(path.c_str(), folder.c_str(), folder.size());
}

bool SamePath(const std::wstring& left, const std::wstring& right) noexcept {
  return left.size() == right.size() && SameLetters(left.c_str(), right.c_str(), left.size());
}

}  // namespace policy
