#include "library.h"

#include <cstring>

#include "texts.h"

namespace kelctl {
namespace {

constexpr wchar_t kLibraryName[] = L"KELUtils.dll";

// The library encrypts a longer setting as the empty one.
constexpr std::size_t kLongestSetting = 253;      // characters of the code page
constexpr std::size_t kLongestSettingUtf8 = 254;  // bytes

std::wstring InThisProgramsFolder() {
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), kLongestPath));
  return path.substr(0, path.rfind(L'\\') + 1) + kLibraryName;
}

}  // namespace

// A full path, so that the platform does not search its own folders for a bare name.
std::string LibraryPath(const std::string& option) {
  return option.empty() ? Utf8FromWide(InThisProgramsFolder()) : FullPath(option);
}

Library::Library(const std::string& path) : path_(LibraryPath(path)) {
  module_.Reset(LoadLibraryExW(WideFromUtf8(path_).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module_) throw LibraryError("cannot load " + path_ + " (" + WindowsError(GetLastError()) + ")");
}

AnyFunction Library::Find(const char* exportName) const {
  const FARPROC function = GetProcAddress(module_.Get(), exportName);
  if (!function) throw LibraryError(path_ + " has no export " + exportName);
  return reinterpret_cast<AnyFunction>(function);
}

std::string EncryptSetting(const Library& library, const std::string& plain) {
  const std::string text = CodePageFromUtf8(plain);
  if (text.size() > kLongestSetting || plain.size() > kLongestSettingUtf8) {
    throw UsageError("a setting may have " + std::to_string(kLongestSetting) + " characters and " +
                     std::to_string(kLongestSettingUtf8) + " bytes in UTF-8");
  }
  auto* const encrypt = library.Typed<decltype(KE_EncryptSetting)>("KE_EncryptSetting");
  const auto length = static_cast<std::int32_t>(text.size());
  std::int32_t size = 0;
  const KE_RESULT asked = encrypt(text.c_str(), length, nullptr, &size);
  if (asked != KE_BUFFER_TOO_SMALL) throw CallError("KE_EncryptSetting", asked);
  std::string setting(static_cast<std::size_t>(size), '\0');
  ThrowUnlessSuccess("KE_EncryptSetting", encrypt(text.c_str(), length, setting.data(), &size));
  setting.resize(static_cast<std::size_t>(size));
  std::erase_if(setting, [](char c) { return c == '\r' || c == '\n'; });
  return setting;
}

std::string DecryptSetting(const Library& library, const std::string& setting) {
  // The decrypted text is shorter than its base64 form, so it always fits with its terminator.
  std::string buffer = setting + std::string(4, '\0');
  auto* const decrypt = library.Typed<decltype(KE_DecryptSetting)>("KE_DecryptSetting");
  ThrowUnlessSuccess("KE_DecryptSetting", decrypt(buffer.data(), static_cast<std::int32_t>(buffer.size())));
  buffer.resize(std::strlen(buffer.c_str()));
  return buffer;
}

}  // namespace kelctl
