#include "key_blob.h"

#include <cstring>

namespace apicr {
namespace {

constexpr std::size_t kTextLength = APICR_KEY_BLOB_SIZE - 1;
constexpr std::size_t kRandomLength = kTextLength / 4 * 3;
static_assert(kTextLength % 4 == 0, "whole base64 groups, so that the text needs no padding");

void EncodeGroup(const std::uint8_t* bytes, char* text) noexcept {
  static const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const unsigned group = bytes[0] << 16 | bytes[1] << 8 | bytes[2];
  for (int i = 0; i < 4; ++i) text[i] = kAlphabet[group >> (18 - 6 * i) & 0x3F];
}

}  // namespace

bool IsKeyBlob(const char* keyBlob) noexcept {
  return keyBlob != nullptr && strnlen(keyBlob, kTextLength + 1) == kTextLength;
}

bool DeriveKey(std::string_view label, const char* keyBlob, Key& key) noexcept {
  static_assert(kHashSize == kKeySize);
  Hash hash;
  return hash.Add(label.data(), label.size()) && hash.Add(keyBlob, kTextLength) && hash.Finish(key.bytes);
}

bool MakeKeyBlob(char (&keyBlob)[APICR_KEY_BLOB_SIZE]) noexcept {
  Secret<kRandomLength> random;
  if (!FillRandomly(random.bytes, kRandomLength)) return false;
  for (std::size_t i = 0; i < kRandomLength / 3; ++i) EncodeGroup(random.bytes + 3 * i, keyBlob + 4 * i);
  keyBlob[kTextLength] = '\0';
  return true;
}

}  // namespace apicr
