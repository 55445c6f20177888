#include "store/cipher.h"

#include <cstring>
#include <vector>

#include "frame/crypto.h"
#include "store/enciphered_text.h"
#include "win/wipe.h"

namespace store {
namespace {

using CipherFunction = decltype(frame::CryptoTable::APIcr_EncryptBuffer);

std::int32_t RunInPlace(CipherFunction function, char* data, std::size_t length, const char* keyBlob) {
  const std::size_t padded = PaddedLength(length);
  std::vector<char> scratch(padded + 1);
  const win::WipeAtEnd wipe(scratch.data(), scratch.size());
  std::memcpy(scratch.data(), data, length);
  std::int32_t error = 0;
  function(scratch.data(), static_cast<std::uint32_t>(padded), keyBlob, 0, &error);
  if (error == 0) std::memcpy(data, scratch.data(), length);
  return error;
}

}  // namespace

std::int32_t DecryptBufferInPlace(char* data, std::size_t length, const char* keyBlob) {
  const auto* crypto = frame::Crypto();
  return crypto ? RunInPlace(crypto->APIcr_DecryptBuffer, data, length, keyBlob) : kDecipherUnavailable;
}

std::int32_t EncryptBufferInPlace(char* data, std::size_t length, const char* keyBlob) {
  const auto* crypto = frame::Crypto();
  return crypto ? RunInPlace(crypto->APIcr_EncryptBuffer, data, length, keyBlob) : kEncipherUnavailable;
}

}  // namespace store
