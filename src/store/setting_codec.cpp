#include "store/setting_codec.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

#include "siblings/modules.h"
#include "siblings/sibling_table.h"
#include "store/codec.h"
#include "store/ini_store.h"
#include "text/base64.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/owner.h"

namespace store {

namespace {

constexpr std::uint32_t kTextFlags = 0;       // padding and line breaks
constexpr std::size_t kCharacterLimit = 254;  // a setting has fewer characters
constexpr std::size_t kUtf8Limit = 254;       // bytes of its UTF-8 form at most
constexpr std::size_t kLargestBlock = PaddedLength(kUtf8Limit + 1);

// Binds the crypto module; a failure is traced under `function` unless that is null.
bool LoadSettingCrypto(const char* function) {
  const auto folder = win::FolderOf(siblings::kCryptoModule.folder);
  const bool loaded = siblings::LoadCrypto(folder ? folder->c_str() : nullptr);
  if (!loaded && function) Trace(trace::kAlways, function, "Could not load ApiCrFunctions");
  return loaded;
}

// Puts the UTF-8 form of a text in the system's code page into a zeroed block and returns its length. A text that is
// empty, too long or not convertible gives the empty setting.
std::size_t PutUtf8(const char* text, std::int32_t textLength, char (&block)[kLargestBlock]) noexcept {
  const auto length = static_cast<int>(strnlen(text, std::clamp<std::int32_t>(textLength, 0, kCharacterLimit)));
  if (length == 0 || length >= static_cast<int>(kCharacterLimit)) return 0;
  wchar_t wide[kCharacterLimit];
  const win::WipeAtEnd wipe(wide, sizeof wide);
  const int units = MultiByteToWideChar(CP_ACP, 0, text, length, wide, kCharacterLimit);
  const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide, units, block, kUtf8Limit, nullptr, nullptr);
  if (bytes == 0)
    SecureZeroMemory(block, sizeof block);  // the conversion leaves the beginning of a form that is too long
  return static_cast<std::size_t>(bytes);
}

enum class Failure { kReported, kIgnored };

// Decodes and decrypts a setting text into `buffer`; an error of the crypto module is the result, or is ignored.
KE_RESULT Decipher(std::string_view text, Failure failure, char* buffer, std::int32_t size) {
  const auto textLength = static_cast<std::int32_t>(text.size());
  std::int32_t length = 0;
  text::Base64DecodeText(text.data(), textLength, nullptr, &length);
  std::vector<char> bytes;
  try {
    bytes.resize(static_cast<std::size_t>(length) + 1);
  } catch (const std::bad_alloc&) {
    return KE_NOT_CREATED;
  }
  const win::WipeAtEnd wipe(bytes.data(), bytes.size());
  text::Base64DecodeText(text.data(), textLength, bytes.data(), &length);
  const std::int32_t error = DecryptBufferInPlace(bytes.data(), static_cast<std::size_t>(length), kSettingKeyBlob);
  if (error != 0 && failure == Failure::kReported) return static_cast<KE_RESULT>(error);
  if (size <= length + 1) return KE_BUFFER_TOO_SMALL;
  std::memcpy(buffer, bytes.data(), strlen(bytes.data()) + 1);
  return KE_SUCCESS;
}

}  // namespace

KE_RESULT EncryptSetting(const char* text, std::int32_t textLength, char* output, std::int32_t* outputSize) {
  if (!LoadSettingCrypto("KE_EncryptSetting")) return KE_CRYPTO_NOT_LOADED;
  if (text == nullptr || outputSize == nullptr) return KE_MISSING_ARGUMENT;
  char block[kLargestBlock] = {};
  const win::WipeAtEnd wipe(block, sizeof block);
  const std::size_t length = PaddedLength(PutUtf8(text, textLength, block) + 1);
  const auto blockLength = static_cast<std::int32_t>(length);
  const std::int32_t required = text::Base64RequiredLength(blockLength, kTextFlags);
  if (output == nullptr) {
    *outputSize = required;
    return KE_BUFFER_TOO_SMALL;
  }
  const std::int32_t error = EncryptBufferInPlace(block, length, kSettingKeyBlob);
  if (error != 0) return static_cast<KE_RESULT>(error);
  if (*outputSize < required) return KE_BUFFER_TOO_SMALL;
  text::Base64EncodeText(block, blockLength, output, outputSize, kTextFlags);
  return KE_SUCCESS;
}

KE_RESULT DecryptSetting(char* buffer, std::int32_t size) noexcept {
  return trace::ExportCall("KE_DecryptSetting", [&](trace::Export&) -> KE_RESULT {
    if (!LoadSettingCrypto("KE_DecryptSetting")) return KE_CRYPTO_NOT_LOADED;
    if (buffer == nullptr) return KE_MISSING_ARGUMENT;
    return Decipher(buffer, Failure::kReported, buffer, size);
  });
}

KE_RESULT CopyDeciphered(std::string_view stored, char* buffer, std::int32_t size) {
  LoadSettingCrypto(nullptr);
  return Decipher(stored, Failure::kIgnored, buffer, size);
}

}  // namespace store
