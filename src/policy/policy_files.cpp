#include <iterator>

#include "policy/local_policy.h"
#include "policy/os_identification.h"
#include "policy/system_files.h"

namespace policy {

namespace {

// The reason in the sink's line for a text whose meaning is unclear.
constexpr DWORD kNotUnderstood = ERROR_INVALID_DATA;

bool SameLetters(const wchar_t* left, const wchar_t* right, std::size_t length) noexcept {
  const int count = static_cast<int>(length);
  return CompareStringOrdinal(left, count, right, count, TRUE) == CSTR_EQUAL;
}

bool IsFull(const std::wstring& path) noexcept {
  return path.starts_with(L'\\') || path.starts_with(L'/') || (path.size() > 1 && path[1] == L':');
}

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

std::optional<std::u16string> DecodeCodePage(const std::string& bytes) {
  if (bytes.empty()) return std::u16string();
  const int size = static_cast<int>(bytes.size());
  std::wstring text(bytes.size(), L'\0');  // a character takes at least one byte
  const int length = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, bytes.data(), size, text.data(), size);
  if (length == 0) return std::nullopt;
  return Utf16({text.data(), static_cast<std::size_t>(length)});
}

std::optional<ScriptsIni> Understood(const std::string& bytes) {
  auto text = DecodeUtf16(bytes);
  // Another encoding gives invalid bytes or zeros; both are refused.
  if (!text) text = DecodeCodePage(bytes);
  return text ? ParseScriptsIni(*text) : std::nullopt;
}

// Makes the new text of gpt.ini from its text, or from null when it is missing; none for a text that is not understood.
using GptIniChange = std::optional<std::string> (*)(const std::string* text, ScriptsExtension extension);

std::optional<std::string> WithStep(const std::string* text, ScriptsExtension extension) {
  if (text) return StepMachineVersion(*text, extension);
  return extension == ScriptsExtension::kListed ? NewGptIni() : std::string();
}

std::optional<std::string> WithListing(const std::string* text, ScriptsExtension extension) {
  return text && ListsScriptsExtension(*text) ? *text : WithStep(text, extension);
}

DWORD ReadGptIni(const std::wstring& path, GptIniChange change, ScriptsExtension extension, std::string& text,
                 std::string& changed) {
  const DWORD error = ReadPolicyFile(path, kLongestGptIni, text);
  if (error != ERROR_SUCCESS && !IsMissing(error)) return error;
  std::optional<std::string> made = change(error == ERROR_SUCCESS ? &text : nullptr, extension);
  if (!made) return kNotUnderstood;
  changed = std::move(*made);
  return ERROR_SUCCESS;
}

KE_RESULT ChangeGptIni(const SinkCall& call, const PolicyPlaces& places, GptIniChange change,
                       ScriptsExtension extension) {
  const std::wstring path = GptIniPath(places);
  std::string text, changed;
  DWORD error = ReadGptIni(path, change, extension, text, changed);
  if (error == ERROR_SUCCESS && changed != text)
    error = WritePolicyFile(call, path, changed, text, FILE_ATTRIBUTE_NORMAL);
  return call.Finish(KE_STORE_UNUSABLE, error, L"Error changing policy version", path.c_str());
}

}  // namespace

PolicyPlaces MachinePlaces() {
  wchar_t windows[MAX_PATH] = {};
  GetSystemWindowsDirectoryW(windows, MAX_PATH);
  return {.folder = std::wstring(windows) + L"\\System32\\GroupPolicy", .osCode = GetOsCode()};
}

std::vector<RegistryPlace> RegistryPlaces(const PolicyPlaces& places, ScriptKind kind) {
  const bool vista = places.osCode == 0 || places.osCode >= kWindowsVista;
  const bool windows7 = places.osCode == 0 || places.osCode >= kWindows7;
  const auto path = [&](const wchar_t* key) { return places.prefix + key + Wide(NameOf(kind)); };
  return {
      {path(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Group Policy\\Scripts\\"), "scripts", vista, windows7,
       windows7},
      {path(L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Group Policy\\State\\Machine\\Scripts\\"), "state", vista,
       windows7, false},
      {path(L"SOFTWARE\\Policies\\Microsoft\\Windows\\System\\Scripts\\"), "policies", !vista, false, false},
  };
}

std::wstring MachineFolder(const PolicyPlaces& places) { return places.folder + L"\\Machine"; }

std::wstring ScriptsFolder(const PolicyPlaces& places, ScriptKind kind) {
  return MachineFolder(places) + L"\\Scripts\\" + Wide(NameOf(kind));
}

std::wstring ScriptsIniPath(const PolicyPlaces& places) { return MachineFolder(places) + L"\\Scripts\\scripts.ini"; }

std::wstring GptIniPath(const PolicyPlaces& places) { return places.folder + L"\\gpt.ini"; }

std::optional<std::wstring> ProgramPath(const PolicyPlaces& places, ScriptKind kind, std::u16string_view written) {
  const std::wstring program = Expanded(Wide(written));
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

KE_RESULT ReadScriptsFile(ILogSink* sink, const PolicyPlaces& places, ScriptsFile& file) {
  const SinkCall call(sink, __func__);
  file = {.path = ScriptsIniPath(places), .bytes = {}, .ini = {}};
  DWORD error = ReadPolicyFile(file.path, 2 + kLongestScriptsIni * 2, file.bytes);
  if (IsMissing(error)) return call.End(KE_SUCCESS);
  if (error == ERROR_SUCCESS) {
    auto understood = Understood(file.bytes);
    if (understood) file.ini = std::move(*understood);
    if (!understood) error = kNotUnderstood;
  }
  return call.Finish(KE_STORE_UNUSABLE, error, L"Error reading policy scripts", file.path.c_str());
}

void RemoveLeftovers(const PolicyPlaces& places) {
  for (const std::wstring& path : {ScriptsIniPath(places), GptIniPath(places)}) RemovePolicyLeftovers(path);
}

KE_RESULT PrepareChange(ILogSink* sink, const PolicyPlaces& places, ScriptsExtension extension, ScriptsFile& file) {
  const SinkCall call(sink, __func__);
  const std::wstring version = GptIniPath(places);
  for (const std::wstring& path : {ScriptsIniPath(places), version}) {
    if (const DWORD error = CheckWritable(path); error != ERROR_SUCCESS)
      return call.Finish(KE_STORE_UNUSABLE, error, L"Error opening policy file", path.c_str());
  }
  std::string text, changed;
  if (const DWORD error = ReadGptIni(version, WithStep, extension, text, changed); error != ERROR_SUCCESS)
    return call.Finish(KE_STORE_UNUSABLE, error, L"Error reading policy version", version.c_str());
  return call.End(ReadScriptsFile(sink, places, file));
}

KE_RESULT WriteScriptsFile(ILogSink* sink, const ScriptsFile& file) {
  const SinkCall call(sink, __func__);
  // Not left to the next start of the machine: scripts that are registered until then would be deleted with the file.
  if (!HasSections(file.ini) && DeletePolicyFile(file.path) == ERROR_SUCCESS) return call.End(KE_SUCCESS);
  const std::string bytes = EncodeUtf16(TextOf(file.ini));
  const DWORD error = WritePolicyFile(call, file.path, bytes, file.bytes, FILE_ATTRIBUTE_HIDDEN);
  return call.Finish(KE_STORE_UNUSABLE, error, L"Error writing policy scripts", file.path.c_str());
}

KE_RESULT StepPolicyVersion(ILogSink* sink, const PolicyPlaces& places, ScriptsExtension extension) {
  return ChangeGptIni(SinkCall(sink, __func__), places, WithStep, extension);
}

KE_RESULT ListScriptsExtension(ILogSink* sink, const PolicyPlaces& places) {
  return ChangeGptIni(SinkCall(sink, __func__), places, WithListing, ScriptsExtension::kListed);
}

}  // namespace policy
