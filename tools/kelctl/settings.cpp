#include "settings.h"

#include <algorithm>
#include <cstring>

#include "KELUtils.h"
#include "calls.h"

namespace kelctl {
namespace {

// The library enciphers a longer setting as the empty one.
constexpr std::size_t kLongestSetting = 253;      // characters of the code page
constexpr std::size_t kLongestSettingUtf8 = 254;  // bytes

}  // namespace

std::string EncryptSetting(Library& library, const std::string& plain) {
  const std::string text = library.ToCodePage(plain);
  if (text.size() > kLongestSetting || plain.size() > kLongestSettingUtf8) {
    throw UsageError("a setting may have " + std::to_string(kLongestSetting) + " characters and " +
                     std::to_string(kLongestSettingUtf8) + " bytes in UTF-8");
  }
  auto* const encrypt = KELCTL_EXPORT(library, KE_EncryptSetting);
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

std::string DecryptSetting(Library& library, const std::string& setting) {
  // The deciphered text is shorter than its base64 form, which therefore fits, with its terminator, in any case.
  std::string buffer = setting + std::string(4, '\0');
  auto* const decrypt = KELCTL_EXPORT(library, KE_DecryptSetting);
  ThrowUnlessSuccess("KE_DecryptSetting", decrypt(buffer.data(), static_cast<std::int32_t>(buffer.size())));
  buffer.resize(std::strlen(buffer.c_str()));
  return buffer;
}

}  // namespace kelctl
