#include "policy/policy_files.h"

#include <windows.h>

#include <optional>

#include "policy/log_sink.h"
#include "policy/system_files.h"

namespace policy {

namespace {

// The reason that the sink gives for a text that cannot be understood.
constexpr DWORD kNotUnderstood = ERROR_INVALID_DATA;

std::optional<std::wstring> DecodeCodePage(const std::string& bytes) {
  if (bytes.empty()) return std::wstring();
  const int size = static_cast<int>(bytes.size());
  std::wstring text(bytes.size(), L'\0');  // a character takes at least one byte
  const int length = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, bytes.data(), size, text.data(), size);
  if (length == 0) return std::nullopt;
  text.resize(static_cast<std::size_t>(length));
  return text;
}

std::optional<ScriptsIni> Understood(const std::string& bytes) {
  auto text = DecodeUtf16(bytes);
  // Bytes that no character has, or zeros, follow from another encoding; both are refused.
  if (!text) text = DecodeCodePage(bytes);
  return text ? ParseScriptsIni(*text) : std::nullopt;
}

// Reads gpt.ini and has `change` make its new text: from the one it has, null when it is missing. None for a text that
// cannot be understood, the same one for no change.
template <typename Change>
DWORD ReadGptIni(const std::wstring& path, Change change, std::string& text, std::string& changed) {
  const DWORD error = ReadPolicyFile(path, kLongestGptIni, text);
  if (error != ERROR_SUCCESS && !IsMissing(error)) return error;
  std::optional<std::string> made = change(error == ERROR_SUCCESS ? &text : nullptr);
  if (!made) return kNotUnderstood;
  changed = std::move(*made);
  return ERROR_SUCCESS;
}

template <typename Change>
KE_RESULT ChangeGptIni(const SinkCall& call, const PolicyPlaces& places, Change change) {
  const std::wstring path = GptIniPath(places);
  std::string text, changed;
  DWORD error = ReadGptIni(path, change, text, changed);
  if (error == ERROR_SUCCESS && changed != text)
    error = WritePolicyFile(call, path, changed, text, FILE_ATTRIBUTE_NORMAL);
  if (error == ERROR_SUCCESS) return call.End(KE_SUCCESS);
  return call.End(call.Fail(KE_STORE_UNUSABLE, error, L"Error changing policy version", path.c_str()));
}

auto VersionStep(ScriptsExtension extension) {
  return [extension](const std::string* text) -> std::optional<std::string> {
    if (text) return StepMachineVersion(*text, extension);
    return extension == ScriptsExtension::kListed ? NewGptIni() : std::string();
  };
}

}  // namespace

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
  if (error == ERROR_SUCCESS) return call.End(KE_SUCCESS);
  return call.End(call.Fail(KE_STORE_UNUSABLE, error, L"Error reading policy scripts", file.path.c_str()));
}

void RemoveLeftovers(const PolicyPlaces& places) {
  for (const std::wstring& path : {ScriptsIniPath(places), GptIniPath(places)}) RemovePolicyLeftovers(path);
}

KE_RESULT PrepareChange(ILogSink* sink, const PolicyPlaces& places, ScriptsExtension extension, ScriptsFile& file) {
  const SinkCall call(sink, __func__);
  const std::wstring version = GptIniPath(places);
  for (const std::wstring& path : {ScriptsIniPath(places), version}) {
    const DWORD error = CheckWritable(path);
    if (error == ERROR_SUCCESS) continue;
    return call.End(call.Fail(KE_STORE_UNUSABLE, error, L"Error opening policy file", path.c_str()));
  }
  std::string text, changed;
  const DWORD error = ReadGptIni(version, VersionStep(extension), text, changed);
  if (error == ERROR_SUCCESS) return call.End(ReadScriptsFile(sink, places, file));
  return call.End(call.Fail(KE_STORE_UNUSABLE, error, L"Error reading policy version", version.c_str()));
}

KE_RESULT WriteScriptsFile(ILogSink* sink, const ScriptsFile& file) {
  const SinkCall call(sink, __func__);
  // Not left to the next start of the machine: what is registered until then would go with the file.
  if (!HasSections(file.ini) && DeletePolicyFile(file.path) == ERROR_SUCCESS) return call.End(KE_SUCCESS);
  const std::string bytes = EncodeUtf16(TextOf(file.ini));
  const DWORD error = WritePolicyFile(call, file.path, bytes, file.bytes, FILE_ATTRIBUTE_HIDDEN);
  if (error == ERROR_SUCCESS) return call.End(KE_SUCCESS);
  return call.End(call.Fail(KE_STORE_UNUSABLE, error, L"Error writing policy scripts", file.path.c_str()));
}

KE_RESULT StepPolicyVersion(ILogSink* sink, const PolicyPlaces& places, ScriptsExtension extension) {
  return ChangeGptIni(SinkCall(sink, __func__), places, VersionStep(extension));
}

KE_RESULT ListScriptsExtension(ILogSink* sink, const PolicyPlaces& places) {
  return ChangeGptIni(SinkCall(sink, __func__), places, [&](const std::string* text) -> std::optional<std::string> {
    if (!text) return NewGptIni();
    return ListsScriptsExtension(*text) ? *text : StepMachineVersion(*text, ScriptsExtension::kListed);
  });
}

}  // namespace policy
