#include "ApiCr.h"

#include <doctest/doctest.h>

#include "siblings/functions.h"
#include "support/product_tree.h"

namespace {

const std::string kBlob(188, 'K'), kOtherBlob(188, 'L');

std::string Apply(decltype(&APIcr_EncryptBuffer) function, std::string text, const std::string& keyBlob = kBlob) {
  std::int32_t error = -1;
  function(text.data(), static_cast<std::uint32_t>(text.size()), keyBlob.c_str(), 0, &error);
  CHECK(error == APICR_SUCCESS);
  return text;
}

}  // namespace

TEST_CASE("crypto: buffers decrypt, also cut ones, and bad arguments and uncalled functions are refused") {
  const support::LoadedDll crypto(support::BuildFolder() / "devkit" / "ApiCr.dll");
  const auto encrypt = CALL(crypto, APIcr_EncryptBuffer), decrypt = CALL(crypto, APIcr_DecryptBuffer);
  std::int32_t error = 0;
  encrypt(&error, 17, kBlob.c_str(), 0, &error);
  CHECK(error == APICR_BAD_LENGTH);
  decrypt(nullptr, 16, kBlob.c_str(), 0, &error);
  CHECK(error == APICR_BAD_ARGUMENT);
  decrypt(&error, 16, "short", 0, &error);
  CHECK(error == APICR_BAD_ARGUMENT);
  // Computed with the openssl program.
  CHECK(Apply(encrypt, "0123456789abcdefFEDCBA9876543210") ==
        std::string("\x04\xf5\x05\x93\x95\x11\x2d\x2a\xa4\x4e\x78\x74\x44\x5c\x0c\xab\x10\xe7\x6f\x65\x95\x67\x39\x6d"
                    "\xc7\x23\x3d\x24\x42\x65\x77\x5d"));
  for (const std::size_t length : {0, 16, 32, 1 << 20}) {
    const std::string text(length, 't'), cipher = Apply(encrypt, text);
    CHECK(Apply(decrypt, cipher) == text);
    CHECK(Apply(decrypt, cipher.substr(0, length / 32 * 16)) == text.substr(0, length / 32 * 16));
    CHECK((length == 0 || Apply(decrypt, cipher, kOtherBlob) != text));
  }
#define SKIP(name, presence)
#define CHECK_REFUSED(name, presence) CHECK(crypto.Get<int(KE_SIBLING_CALL*)()>(#name)() == APICR_NOT_SUPPORTED);
  KE_CRYPTO_FUNCTIONS(SKIP, CHECK_REFUSED)
}
