// The exports of encrypted settings, encrypted value files, and the stored passwords.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "KELUtils.h"
#include "store/accessors.h"
#include "store/encrypted_file.h"
#include "store/setting_codec.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/owner.h"

using text::IsBlank;
using trace::Export;
using trace::ExportCall;
using trace::kDetail;

namespace {

constexpr std::size_t kPasswordSize = 2048;  // bytes, with the terminating zero; a longer password is not usable

// Compares in constant time: the duration is independent of the secret, which is zero-filled to its size.
bool IsSamePassword(const char (&secret)[kPasswordSize], std::string_view password) noexcept {
  // Volatile: the compiler must not leave the loop early.
  volatile unsigned difference = password.size() < kPasswordSize ? 0 : 1;
  for (std::size_t i = 0; i < kPasswordSize; ++i) {
    const char character = i < password.size() ? password[i] : '\0';
    difference = difference | static_cast<unsigned char>(secret[i] ^ character);
  }
  return difference == 0;
}

bool IsUninstallPassword(const char* password, bool stored) {
  if (IsBlank(password)) return false;
  char secret[kPasswordSize] = {};
  const win::WipeAtEnd wipe(secret, sizeof secret);
  const auto fetch = stored ? KE_GetUninstallPassEx : KE_GetUninstallPass;
  return fetch(secret, kPasswordSize) == KE_SUCCESS && IsSamePassword(secret, password);
}

bool HasUninstallPassword() {
  char secret[kPasswordSize] = {};
  const win::WipeAtEnd wipe(secret, sizeof secret);
  return KE_GetUninstallPassEx(secret, kPasswordSize) == KE_SUCCESS && secret[0] != '\0';
}

}  // namespace

// Settings

KE_RESULT KE_API KE_EncryptSetting(const char* text, int32_t textLength, char* output, int32_t* outputSize) {
  return ExportCall(__func__, [&](Export&) { return store::EncryptSetting(text, textLength, output, outputSize); });
}

KE_RESULT KE_API KE_DecryptSetting(char* buffer, int32_t size) { return store::DecryptSetting(buffer, size); }

KE_RESULT KE_API KE_GetPasswordRCMDec(char* buffer, int32_t size) {
  return ExportCall("KE_GetPasswordRCM", [&](Export&) -> KE_RESULT {
    if (buffer == nullptr) return KE_MISSING_ARGUMENT;
    if (size <= 0) return KE_BUFFER_TOO_SMALL;
    return store::ReadRemoteControlPassword(buffer, size);
  });
}

// Value files

KE_RESULT KE_API KE_GetEncryptedFileValue(const char* section, const char* key, char* buffer, int32_t size,
                                          const char* filePath) {
  return ExportCall(__func__, [&](Export&) { return store::GetFileValue(section, key, buffer, size, filePath); });
}

KE_RESULT KE_API KE_SetEncryptedFileValue(const char* section, const char* key, const char* value,
                                          const char* filePath) {
  return ExportCall(__func__, [&](Export&) { return store::SetFileValue(section, key, value, filePath); });
}

// Uninstall password

KE_RESULT KE_API KE_SetUninstallPass(const char* text, uint32_t) {
  return store::SetText(store::RowOf(store::kTextSetters, "KE_SetUninstallPass"), text);
}

KE_RESULT KE_API KE_GetUninstallPass(char* buffer, int32_t size) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (buffer == nullptr) return KE_MISSING_ARGUMENT;
    return store::ReadUninstallPassword(self.name, store::CopyDeciphered, buffer, size);
  });
}

KE_RESULT KE_API KE_GetUninstallPassEx(char* buffer, int32_t size) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (buffer == nullptr) return KE_MISSING_ARGUMENT;
    return store::ReadUninstallPassword(self.name, store::CopyOut, buffer, size);
  });
}

// The two tests return yes or no; their trace always ends with 0.

int32_t KE_API KE_CheckInstallationPassw(const char* password, int32_t stored) {
  bool correct = false;
  ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    correct = IsUninstallPassword(password, stored != 0);
    Trace(kDetail, self.name, correct ? "The password is correct!" : "The passwords do not match!");
    return KE_SUCCESS;
  });
  return correct ? 1 : 0;
}

int32_t KE_API KE_IsNeededInstallationPassw(void) {
  bool needed = false;
  ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    needed = HasUninstallPassword();
    Trace(kDetail, self.name, needed ? "The UnInstallPass is Configured" : "The UnInstallPass is not Configured");
    return KE_SUCCESS;
  });
  return needed ? 1 : 0;
}
