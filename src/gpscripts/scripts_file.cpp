#include "gpscripts/scripts_file.h"

#include <windows.h>

#include <optional>

#include "gpscripts/policy_file.h"
#include "gpscripts/sink_call.h"

namespace gpscripts {
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

// Reads gpt.ini and changes it by `change`, which is given its text, none when it is missing, and gives the new one:
// none when the text cannot be understood, the same one for no change.
template <typename Change>
KE_RESULT ChangeGptIni(const SinkCall& call, const PolicyPlaces& places, Change change) {
  const std::wstring path = GptIniPath(places);
  std::string text;
  DWORD error = ReadPolicyFile(path, kLongestGptIni, text);
  if (error == ERROR_SUCCESS || IsMissing(error)) {
    const std::optional<std::string> changed = change(error == ERROR_SUCCESS ? &text : nullptr);
    error = !changed ? kNotUnderstood : ERROR_SUCCESS;
    if (changed && *changed != text) error = WritePolicyFile(path, *changed, text, FILE_ATTRIBUTE_NORMAL);
  }
  if (error == ERROR_SUCCESS) return call.End(KE_SUCCESS);
  return call.End(call.Fail(KE_STORE_UNUSABLE, error, L"Error changing policy version", path.c_str()));
}

}  // namespace

KE_RESULT ReadScriptsFile(frame::ILogSink* sink, const PolicyPlaces& places, ScriptsFile& file) {
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

KE_RESULT CheckFilesWritable(frame::ILogSink* sink, const PolicyPlaces& places) {
  const SinkCall call(sink, __func__);
  for (const std::wstring& path : {ScriptsIniPath(places), GptIniPath(places)}) {
    const DWORD error = CheckWritable(path);
    if (error == ERROR_SUCCESS) continue;
    return call.End(call.Fail(KE_STORE_UNUSABLE, error, L"Error opening policy file", path.c_str()));
  }
  return call.End(KE_SUCCESS);
}

KE_RESULT WriteScriptsFile(frame::ILogSink* sink, const ScriptsFile& file) {
  const SinkCall call(sink, __func__);
  // Not left to the next start of the machine: what is registered until then would go with the file.
  if (!HasSections(file.ini) && DeletePolicyFile(file.path) == ERROR_SUCCESS) return call.End(KE_SUCCESS);
  const std::string bytes = EncodeUtf16(TextOf(file.ini));
  const DWORD error = WritePolicyFile(file.path, bytes, file.bytes, FILE_ATTRIBUTE_HIDDEN);
  if (error == ERROR_SUCCESS) return call.End(KE_SUCCESS);
  return call.End(call.Fail(KE_STORE_UNUSABLE, error, L"Error writing policy scripts", file.path.c_str()));
}

KE_RESULT StepPolicyVersion(frame::ILogSink* sink, const PolicyPlaces& places, ScriptsExtension extension) {
  return ChangeGptIni(SinkCall(sink, __func__), places, [&](const std::string* text) -> std::optional<std::string> {
    if (text) return StepMachineVersion(*text, extension);
    return extension == ScriptsExtension::kListed ? NewGptIni() : std::string();
  });
}

KE_RESULT ListScriptsExtension(frame::ILogSink* sink, const PolicyPlaces& places) {
  return ChangeGptIni(SinkCall(sink, __func__), places, [&](const std::string* text) -> std::optional<std::string> {
    if (!text) return NewGptIni();
    return ListsScriptsExtension(*text) ? *text : StepMachineVersion(*text, ScriptsExtension::kListed);
  });
}

}  // namespace gpscripts
