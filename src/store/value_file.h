// Single values of enciphered INI files that other programs keep.
#pragma once

#include <cstdint>

#include "KELUtils.h"

namespace store {

/// The bodies of KE_GetEncryptedFileValue and KE_SetEncryptedFileValue, with their codes. Section and key are cut at
/// 255 characters.
KE_RESULT GetFileValue(const char* section, const char* key, char* buffer, std::int32_t size, const char* filePath);
KE_RESULT SetFileValue(const char* section, const char* key, const char* value, const char* filePath);

}  // namespace store
