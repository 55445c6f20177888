// Single encrypted settings: base64 text of a cipher block that holds the UTF-8 form of the setting and at least one
// zero byte.
#pragma once

#include <cstdint>
#include <string_view>

#include "KEResults.h"

namespace store {

/// The body of KE_EncryptSetting, with its codes. The plain setting is wiped from the memory it was copied to.
KE_RESULT EncryptSetting(const char* text, std::int32_t textLength, char* output, std::int32_t* outputSize);

/// KE_DecryptSetting(), under its trace name. The result stays in UTF-8.
KE_RESULT DecryptSetting(char* buffer, std::int32_t size) noexcept;

/// Decrypts a stored setting into `buffer`. A failure to bind the crypto module or to decrypt is ignored: the result of
/// base64 decoding is then the text. KE_SUCCESS; KE_BUFFER_TOO_SMALL when the size is not greater than
/// the decoded length + 1; KE_NOT_CREATED when memory runs out.
KE_RESULT CopyDeciphered(std::string_view stored, char* buffer, std::int32_t size);

}  // namespace store
