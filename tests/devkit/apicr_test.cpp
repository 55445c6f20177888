#include "ApiCr.h"

#include <doctest/doctest.h>

#include <cstring>

#include "support/product_tree.h"

namespace {

const std::string kBlob(188, 'K');
const std::string kOtherBlob(188, 'L');

struct CryptoModule : support::LoadedDll {
  CryptoModule() : LoadedDll(support::BuildFolder() / "devkit" / "ApiCr.dll") {}

  decltype(&APIcr_EncryptBuffer) encryptBuffer = CALL(*this, APIcr_EncryptBuffer);
  decltype(&APIcr_DecryptBuffer) decryptBuffer = CALL(*this, APIcr_DecryptBuffer);
  decltype(&APIcr_EncryptFile) encryptFile = CALL(*this, APIcr_EncryptFile);
  decltype(&APIcr_DecryptFile) decryptFile = CALL(*this, APIcr_DecryptFile);
};

std::string Apply(decltype(&APIcr_EncryptBuffer) function, std::string text, const std::string& keyBlob = kBlob) {
  std::int32_t error = -1;
  function(text.data(), static_cast<std::uint32_t>(text.size()), keyBlob.c_str(), 0, &error);
  CHECK(error == APICR_SUCCESS);
  return text;
}

std::int32_t Apply(decltype(&APIcr_EncryptFile) function, const std::string& source, const std::string& target,
                   const std::string& keyBlob = kBlob) {
  std::int32_t error = -1;
  function(source.c_str(), target.c_str(), keyBlob.c_str(), &error);
  return error;
}

std::string FromHex(const std::string& hex) {
  std::string bytes;
  for (std::size_t i = 0; i < hex.size(); i += 2) bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  return bytes;
}

std::string Sample(std::size_t length) {
  std::string text(length, '\0');
  std::uint32_t state = 1;
  for (char& byte : text) byte = static_cast<char>((state = state * 1664525 + 1013904223) >> 24);
  return text;
}

}  // namespace

TEST_CASE("hashes of a buffer and of a file") {
  const CryptoModule crypto;
  const support::Folder folder;
  // The hash of a million times "a" shows that a file is hashed across pieces.
  const std::pair<std::string, const char*> rows[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {std::string(1000000, 'a'), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}};
  for (const auto& [text, expected] : rows) {
    std::uint8_t hash[APICR_HASH_SIZE], fileHash[APICR_HASH_SIZE];
    std::int32_t error = -1, fileError = -1;
    support::WriteFile(folder / "a", text);
    CALL(crypto, APIcr_GetHash)(text.data(), text.size(), hash, &error);
    CALL(crypto, APIcr_GetHashFromFile)((folder / "a").c_str(), fileHash, &fileError);
    CHECK(error + fileError == APICR_SUCCESS);
    CHECK(std::string(hash, hash + APICR_HASH_SIZE) == FromHex(expected));
    CHECK(std::string(fileHash, fileHash + APICR_HASH_SIZE) == FromHex(expected));
  }
}

TEST_CASE("enciphered buffers") {
  const CryptoModule crypto;
  std::int32_t error = 0;
  crypto.encryptBuffer(&error, 17, kBlob.c_str(), 0, &error);
  CHECK(error == APICR_BAD_LENGTH);
  crypto.decryptBuffer(nullptr, 16, kBlob.c_str(), 0, &error);
  CHECK(error == APICR_BAD_ARGUMENT);
  crypto.decryptBuffer(&error, 16, "short", 0, &error);
  CHECK(error == APICR_BAD_ARGUMENT);
  // Computed with the openssl program, as was the enciphered file below.
  CHECK(Apply(crypto.encryptBuffer, "0123456789abcdefFEDCBA9876543210") ==
        FromHex("04f5059395112d2aa44e7874445c0cab10e76f659567396dc7233d244265775d"));
  for (const std::size_t length : {0, 16, 32, 48, 64, 1 << 20}) {
    CAPTURE(length);
    const std::string text = Sample(length), cipher = Apply(crypto.encryptBuffer, text);
    CHECK(Apply(crypto.decryptBuffer, cipher) == text);
    const std::size_t cut = length / 32 * 16;
    CHECK(Apply(crypto.decryptBuffer, cipher.substr(0, cut)) == text.substr(0, cut));
    CHECK((length == 0 || Apply(crypto.decryptBuffer, cipher, kOtherBlob) != text));
  }
}

TEST_CASE("random key blobs are usable and differ") {
  const CryptoModule crypto;
  char blobs[2][APICR_KEY_BLOB_SIZE];
  std::int32_t errors[2] = {-1, -1};
  for (const int i : {0, 1}) CALL(crypto, APIcr_GetRandomKey)(blobs[i], sizeof blobs[i], &errors[i]);
  CHECK(errors[0] + errors[1] == APICR_SUCCESS);
  CHECK(std::strspn(blobs[0], "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/") == 188);
  CHECK(std::strcmp(blobs[0], blobs[1]) != 0);
}

TEST_CASE("files are enciphered and deciphered, also in place") {
  const CryptoModule crypto;
  const support::Folder folder;
  const std::string plain = folder / "plain", cipher = folder / "cipher";
  for (const std::size_t length : {0, 15, 16, 16383, 16384, 16385, 100000}) {
    CAPTURE(length);
    support::WriteFile(plain, Sample(length));
    CHECK(Apply(crypto.encryptFile, plain, cipher) == APICR_SUCCESS);
    CHECK(Apply(crypto.decryptFile, cipher, cipher) == APICR_SUCCESS);
    CHECK(support::ReadFile(cipher) == Sample(length));
  }
  support::WriteFile(cipher, FromHex("4170694372463031000102030405060708090a0b0c0d0e0f537ac3dac3506dfe96d8b9e1bd2ca198"
                                     "1c85eb09040870b572047dc5453fa260b017def10f1161d7eed4afc3a9b3eee6"));
  CHECK(Apply(crypto.decryptFile, cipher, plain) == APICR_SUCCESS);
  CHECK(support::ReadFile(plain) == "plain text");
  CHECK(folder.FileCount() == 2);
}

TEST_CASE("whatever goes wrong with a file, the target stays as it was") {
  const CryptoModule crypto;
  const support::Folder folder;
  const std::string source = folder / "source", target = folder / "target";
  support::WriteFile(target, "old");
  support::WriteFile(source, Sample(20000));
  REQUIRE(Apply(crypto.encryptFile, source, source) == APICR_SUCCESS);
  const std::string good = support::ReadFile(source);
  const auto expect = [&](std::int32_t expected, const std::string& content, const std::string& keyBlob = kBlob) {
    support::WriteFile(source, content);
    CHECK(Apply(crypto.decryptFile, source, target, keyBlob) == expected);
    CHECK(support::ReadFile(target) == "old");
    CHECK(folder.FileCount() == 2);
  };
  const std::size_t size = good.size();
  for (const std::size_t at : {0u, 8u, 24u, size / 2, size - 33, size - 1}) {
    CAPTURE(at);
    std::string damaged = good;
    damaged[at] ^= 1;
    expect(APICR_NOT_AUTHENTIC, damaged);
    expect(APICR_NOT_AUTHENTIC, good.substr(0, at));
  }
  expect(APICR_NOT_AUTHENTIC, good + std::string(16, '\0'));
  expect(APICR_NOT_AUTHENTIC, good, kOtherBlob);
  CHECK(Apply(crypto.encryptFile, folder / "missing", target) == APICR_FILE_FAILURE);
  const support::LockedFile inUse(target, FILE_SHARE_READ | FILE_SHARE_WRITE);
  expect(APICR_FILE_FAILURE, good);
}

TEST_CASE("the public-key functions are not supported") {
  const CryptoModule crypto;
  std::uint32_t length = 64;
  std::int32_t error = 0;
  CALL(crypto, APIcr_EncryptWithPublic)("x", 1, nullptr, &length, "key", &error);
  CHECK(error == APICR_NOT_SUPPORTED);
  CHECK(length == 0);
  CALL(crypto, APIcr_MakeKeys)(nullptr, 0, nullptr, 0, &error);
  CHECK(error == APICR_NOT_SUPPORTED);
}
