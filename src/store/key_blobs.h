// The key blobs of the product, opaque texts that only the crypto module understands. Supplied at configure time.
#pragma once

#include <cstddef>

namespace store {

inline constexpr std::size_t kKeyBlobLength = 188;  // base64 characters

extern const char kFileKeyBlob[kKeyBlobLength + 1];     // enciphered INI files and the integration store
extern const char kSettingKeyBlob[kKeyBlobLength + 1];  // single enciphered settings

}  // namespace store
