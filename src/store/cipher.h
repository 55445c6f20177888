// Enciphering in place, through the crypto module.
#pragma once

#include <cstddef>
#include <cstdint>

namespace store {

inline constexpr std::int32_t kDecipherUnavailable = 4;
inline constexpr std::int32_t kEncipherUnavailable = 99999999;

/// Deciphers `length` bytes in place, taken as whole blocks with zero bytes behind. 0, the crypto module's error, or
/// kDecipherUnavailable when the module is not bound; the data is unchanged unless the result is 0. Throws when memory
/// runs out.
std::int32_t DecryptBufferInPlace(char* data, std::size_t length, const char* keyBlob);

/// Enciphers likewise; kEncipherUnavailable when the module is not bound.
std::int32_t EncryptBufferInPlace(char* data, std::size_t length, const char* keyBlob);

}  // namespace store
