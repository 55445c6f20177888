#include <doctest/doctest.h>

#include <algorithm>
#include <optional>
#include <string>

#include "exports/store_tree.h"

using support::LoadedDll;
using support::LockedFile;

namespace {

// The plain setting, or the result code in brackets.
std::string Decrypted(const LoadedDll& dll, const std::string& text, int32_t size) {
  std::string buffer = text + std::string(99, '\0');
  const KE_RESULT result = CALL(dll, KE_DecryptSetting)(buffer.data(), size);
  return result == KE_SUCCESS ? buffer.c_str() : "(" + std::to_string(result) + ")";
}

// Whether a text, given under a mask so that the argument does not count, is in this process's writable memory.
bool IsInMemory(const std::string& masked) {
  MEMORY_BASIC_INFORMATION region;
  for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) != 0; at += region.RegionSize) {
    if (region.State != MEM_COMMIT || region.Protect != PAGE_READWRITE) continue;
    const auto unmasked = [](char memory, char wanted) { return (memory ^ kFakeCipherMask) == wanted; };
    const char* end = at + region.RegionSize;
    if (std::search(at, end, masked.begin(), masked.end(), unmasked) != end) return true;
  }
  return false;
}

}  // namespace

TEST_CASE("settings: a block or text of another length, a text that reads otherwise, or a cut one that reads") {
  const support::ProductTree tree;
  const LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
  // Length of a setting, how many characters to take, length of the text, of the block and of the plain setting.
  const int rows[][5] = {{16, 99, 44, 32, 16},  {70, 60, 90, 64, 60},    {255, 253, 352, 256, 253},
                         {254, 254, 24, 16, 0}, {10000, 255, 24, 16, 0}, {9, -1, 24, 16, 0},
                         {0, 0, 24, 16, 0}};
  for (const auto& [length, taken, enciphered, block, plain] : rows) {
    CAPTURE(length);
    const std::string setting(static_cast<size_t>(length), 'x'), text = Encrypted(dll, setting, taken);
    CHECK((text.size() == static_cast<size_t>(enciphered) && Decrypted(dll, text, block + 1) == "(1778)"));
    CHECK(Decrypted(dll, text, block + 2) == std::string(static_cast<size_t>(plain), 'x'));
  }
  REQUIRE(GetACP() == 1252);
  const std::string longest = std::string(252, 'x') + "\xE4", tooLong = std::string(251, 'x') + "\xE4\x81";
  CHECK(Decrypted(dll, Encrypted(dll, longest, 253), 300).substr(252) == "\xC3\xA4");
  CHECK(Decrypted(dll, Encrypted(dll, tooLong, 253), 300).empty());
  const std::string text = Encrypted(dll, "secret", 6);
  CHECK(Decrypted(dll, " \r\n-" + text.substr(0, 9) + "?\xFF" + text.substr(9), 99) == "secret");
  for (size_t cut = 0; cut < text.size() - 2; ++cut) CHECK(Decrypted(dll, text.substr(0, cut), 99) != "secret");
}

TEST_CASE("stored passwords: one stays in memory, reaches the log, or passes for another one") {
  const StoreTree tree;
  tree.tree.TurnLogOn();
  const LoadedDll dll = tree.Load();
  const auto check = CALL(dll, KE_CheckInstallationPassw);
  char buffer[99] = "kept";
  CHECK((CALL(dll, KE_GetUninstallPass)(buffer, 99) == KE_STORE_UNUSABLE && std::string(buffer) == "kept"));
  CHECK((CALL(dll, KE_GetPasswordRCMDec)(buffer, 99) == KE_STORE_UNUSABLE && std::string(buffer).empty()));
  for (const int32_t length : {12, 60}) {  // inside a string object, and outside of it
    std::string secret, masked;
    for (int i = 0; i < length; ++i) masked += static_cast<char>(('!' + i * 7 % 90) ^ kFakeCipherMask);
    for (const char c : masked) secret += static_cast<char>(c ^ kFakeCipherMask);
    const std::string text = Encrypted(dll, secret, length);
    CHECK(CALL(dll, KE_SetUninstallPass)(text.c_str(), 7) == KE_SUCCESS);
    CHECK(CALL(dll, KE_SetPasswordRCM)(text.c_str()) == KE_SUCCESS);
    const int32_t enough = (length + 16) / 16 * 16 + 2;
    CHECK(CALL(dll, KE_GetPasswordRCMDec)(buffer, enough - 1) == KE_BUFFER_TOO_SMALL);
    CHECK((CALL(dll, KE_GetPasswordRCMDec)(buffer, enough) == KE_SUCCESS && buffer == secret));
    CHECK(check(secret.c_str(), 0) == 1);
    CHECK(check(text.c_str(), 2) == (length == 12 ? 1 : 0));  // the store keeps no line breaks
    CHECK(check((text + "x").c_str(), 2) == 0);
    for (const auto& other : {"a" + secret.substr(1), secret.substr(1), text}) CHECK(check(other.c_str(), 0) == 0);
    const std::string path = tree.tree.Path("values.dat").string();
    for (const char* key : {"1", "2", "3"}) CALL(dll, KE_SetEncryptedFileValue)("S", key, secret.c_str(), path.c_str());
    const std::string log = tree.tree.Log();
    CHECK((log.find("The password is correct!") < log.size() && log.find(secret) == std::string::npos));
    CHECK(log.find("KE_EncryptSetting;\"Could not load") == std::string::npos);
    CHECK(log.find("WriteEncryptedFile;\"Number of items to write: [") < log.size());
    CHECK(IsInMemory(masked));  // the search works
    SecureZeroMemory(secret.data(), secret.size());
    SecureZeroMemory(buffer, sizeof buffer);
    CHECK_FALSE(IsInMemory(masked));
  }
  CHECK((CALL(dll, KE_SetUninstallPass)("", 0) == KE_SUCCESS && CALL(dll, KE_IsNeededInstallationPassw)() == 0));
}

TEST_CASE("integration: a date or identifier that stays, or a single failed write that counts") {
  const StoreTree tree;
  const KE_TIME time{9, 8, 7, 5, 2, 124};
  for (const char* device : {"d", ""}) {
    const LoadedDll dll = tree.Load();
    CHECK((CALL(dll, KE_SetDeviceID)(device) == KE_SUCCESS && CALL(dll, KE_Integrate)(&time) == KE_SUCCESS));
    CHECK(tree.Text("INTEGRA.DAT").find("\r\nDate=2024-03-05 07:08:09\r\n") != std::string::npos);
    std::optional<LockedFile> readable(std::in_place, tree.tree.Store("INTEGRA.DAT"), FILE_SHARE_READ);
    CHECK(CALL(dll, KE_DeIntegrate)() == (*device ? KE_STORE_UNUSABLE : KE_SUCCESS));
    readable.reset();
    CHECK(CALL(tree.Load(), KE_DeIntegrate)() == KE_SUCCESS);
    CHECK(tree.Text("INTEGRA.DAT") == "[INTEGRATION]\r\nDEVICEID=\r\nDate=\r\n");
  }
}
