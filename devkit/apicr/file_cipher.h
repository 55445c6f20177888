// Enciphered files.
//
//   offset       bytes   content
//   0            8       "ApiCrF01"
//   8            16      random initialisation vector
//   24           n       AES-256-CBC of the plain file, padded as PKCS #7 says: n is a multiple of 16 and at least 16
//   24 + n       32      HMAC-SHA-256 of all the bytes before
//
// The two keys are derived from the key blob with separate labels. Files of any size are worked through in pieces.
#pragma once

#include <cstdint>

namespace apicr {

/// Enciphers the file `source` into the file `target`, which may be the same file. Gives one of the APICR_... numbers;
/// unless it is APICR_SUCCESS, the target is as it was.
std::int32_t EncryptFile(const char* source, const char* target, const char* keyBlob) noexcept;

/// The way back. APICR_NOT_AUTHENTIC when the authentication code or the form of the file is wrong.
std::int32_t DecryptFile(const char* source, const char* target, const char* keyBlob) noexcept;

}  // namespace apicr
