// The platform's cryptography (CNG): SHA-256, HMAC-SHA-256, AES-256-CBC and random bytes. Nothing here throws.
#pragma once

#include <windows.h>

#include <bcrypt.h>

#include <cstddef>
#include <cstdint>

#include "win/owner.h"

namespace apicr {

inline constexpr std::size_t kHashSize = 32;
inline constexpr std::size_t kKeySize = 32;
inline constexpr std::size_t kBlockSize = 16;

/// Bytes that are wiped when they are no longer needed.
template <std::size_t kSize>
struct Secret {
  Secret() noexcept = default;
  ~Secret() { SecureZeroMemory(bytes, kSize); }
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;

  std::uint8_t bytes[kSize];
};

using Key = Secret<kKeySize>;

inline void CloseAlgorithm(BCRYPT_ALG_HANDLE algorithm) noexcept { BCryptCloseAlgorithmProvider(algorithm, 0); }

using AlgorithmHandle = win::Owner<BCRYPT_ALG_HANDLE, &CloseAlgorithm, 0>;
using HashHandle = win::Owner<BCRYPT_HASH_HANDLE, &BCryptDestroyHash, 0>;
using KeyHandle = win::Owner<BCRYPT_KEY_HANDLE, &BCryptDestroyKey, 0>;

/// Computes one SHA-256, or with a key one HMAC-SHA-256, over data that comes in pieces. After a failure every further
/// call fails.
class Hash {
 public:
  Hash() noexcept { Start(nullptr, 0, 0); }
  explicit Hash(const Key& key) noexcept { Start(key.bytes, kKeySize, BCRYPT_ALG_HANDLE_HMAC_FLAG); }

  bool Add(const void* data, std::size_t length) noexcept;
  bool Finish(std::uint8_t (&hash)[kHashSize]) noexcept;

 private:
  void Start(const std::uint8_t* key, ULONG keySize, ULONG flags) noexcept;

  AlgorithmHandle algorithm_;
  HashHandle hash_;
};

/// Enciphers or deciphers one text with AES-256-CBC, in place, in pieces whose lengths are multiples of kBlockSize. One
/// object does one or the other, not both.
class AesCbc {
 public:
  AesCbc(const Key& key, const std::uint8_t (&vector)[kBlockSize]) noexcept;

  bool Encrypt(std::uint8_t* data, std::uint32_t length) noexcept;
  bool Decrypt(std::uint8_t* data, std::uint32_t length) noexcept;

 private:
  AlgorithmHandle algorithm_;
  KeyHandle key_;
  std::uint8_t vector_[kBlockSize];  // the cipher block before the next piece
};

bool FillRandomly(void* data, std::size_t length) noexcept;

}  // namespace apicr
