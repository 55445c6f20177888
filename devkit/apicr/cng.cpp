#include "cng.h"

#include <cstring>

namespace apicr {
namespace {

AlgorithmHandle OpenAlgorithm(const wchar_t* name, ULONG flags) noexcept {
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  if (!BCRYPT_SUCCESS(BCryptOpenAlgorithmProvider(&algorithm, name, nullptr, flags))) return AlgorithmHandle();
  return AlgorithmHandle(algorithm);
}

bool UseCbc(const AlgorithmHandle& algorithm) noexcept {
  wchar_t mode[] = BCRYPT_CHAIN_MODE_CBC;
  return BCRYPT_SUCCESS(
      BCryptSetProperty(algorithm.Get(), BCRYPT_CHAINING_MODE, reinterpret_cast<PUCHAR>(mode), sizeof mode, 0));
}

}  // namespace

void Hash::Start(const std::uint8_t* key, ULONG keySize, ULONG flags) noexcept {
  algorithm_ = OpenAlgorithm(BCRYPT_SHA256_ALGORITHM, flags);
  BCRYPT_HASH_HANDLE hash = nullptr;
  if (algorithm_ &&
      BCRYPT_SUCCESS(BCryptCreateHash(algorithm_.Get(), &hash, nullptr, 0, const_cast<PUCHAR>(key), keySize, 0))) {
    hash_.Reset(hash);
  }
}

bool Hash::Add(const void* data, std::size_t length) noexcept {
  auto* const bytes = static_cast<PUCHAR>(const_cast<void*>(data));
  const bool added =
      hash_ && (length == 0 || BCRYPT_SUCCESS(BCryptHashData(hash_.Get(), bytes, static_cast<ULONG>(length), 0)));
  if (!added) hash_.Reset();
  return added;
}

bool Hash::Finish(std::uint8_t (&hash)[kHashSize]) noexcept {
  const bool finished = hash_ && BCRYPT_SUCCESS(BCryptFinishHash(hash_.Get(), hash, kHashSize, 0));
  hash_.Reset();
  return finished;
}

AesCbc::AesCbc(const Key& key, const std::uint8_t (&vector)[kBlockSize]) noexcept
    : algorithm_(OpenAlgorithm(BCRYPT_AES_ALGORITHM, 0)) {
  std::memcpy(vector_, vector, kBlockSize);
  BCRYPT_KEY_HANDLE handle = nullptr;
  if (algorithm_ && UseCbc(algorithm_) &&
      BCRYPT_SUCCESS(BCryptGenerateSymmetricKey(algorithm_.Get(), &handle, nullptr, 0, const_cast<PUCHAR>(key.bytes),
                                                kKeySize, 0))) {
    key_.Reset(handle);
  }
}

// Both directions hand the platform a copy of the vector and chain the pieces themselves: whether the platform leaves
// the next vector behind is not the same on every implementation of CNG.

bool AesCbc::Encrypt(std::uint8_t* data, std::uint32_t length) noexcept {
  if (!key_) return false;
  if (length == 0) return true;
  std::uint8_t vector[kBlockSize];
  std::memcpy(vector, vector_, kBlockSize);
  ULONG done = 0;
  const NTSTATUS status = BCryptEncrypt(key_.Get(), data, length, nullptr, vector, kBlockSize, data, length, &done, 0);
  if (!BCRYPT_SUCCESS(status) || done != length) return false;
  std::memcpy(vector_, data + length - kBlockSize, kBlockSize);
  return true;
}

bool AesCbc::Decrypt(std::uint8_t* data, std::uint32_t length) noexcept {
  if (!key_) return false;
  if (length == 0) return true;
  std::uint8_t vector[kBlockSize];
  std::memcpy(vector, vector_, kBlockSize);
  std::memcpy(vector_, data + length - kBlockSize, kBlockSize);
  ULONG done = 0;
  const NTSTATUS status = BCryptDecrypt(key_.Get(), data, length, nullptr, vector, kBlockSize, data, length, &done, 0);
  return BCRYPT_SUCCESS(status) && done == length;
}

bool FillRandomly(void* data, std::size_t length) noexcept {
  return BCRYPT_SUCCESS(
      BCryptGenRandom(nullptr, static_cast<PUCHAR>(data), static_cast<ULONG>(length), BCRYPT_USE_SYSTEM_PREFERRED_RNG));
}

}  // namespace apicr
