// ApiCr.dll: encrypts and decrypts buffers with the cryptography of Windows (CNG). Nothing throws, and nothing is kept
// between two calls.
#include "ApiCr.h"

#include <windows.h>

#include <bcrypt.h>

#include <cstring>
#include <string_view>

#include "siblings/functions.h"
#include "win/owner.h"

namespace {

constexpr std::size_t kKeySize = 32, kBlockSize = 16, kBlobLength = APICR_KEY_BLOB_SIZE - 1;

void CloseAlgorithm(BCRYPT_ALG_HANDLE algorithm) noexcept { BCryptCloseAlgorithmProvider(algorithm, 0); }

using AlgorithmHandle = win::Owner<BCRYPT_ALG_HANDLE, &CloseAlgorithm, 0>;
using HashHandle = win::Owner<BCRYPT_HASH_HANDLE, &BCryptDestroyHash, 0>;
using KeyHandle = win::Owner<BCRYPT_KEY_HANDLE, &BCryptDestroyKey, 0>;
using Direction = decltype(&BCryptEncrypt);

/// Bytes that are wiped when they are no longer needed.
struct Key {
  std::uint8_t bytes[kKeySize] = {};
  ~Key() { SecureZeroMemory(bytes, sizeof bytes); }
};

AlgorithmHandle OpenAlgorithm(const wchar_t* name) noexcept {
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  return BCRYPT_SUCCESS(BCryptOpenAlgorithmProvider(&algorithm, name, nullptr, 0)) ? AlgorithmHandle(algorithm)
                                                                                   : AlgorithmHandle();
}

PUCHAR BytesOf(const void* data) noexcept { return static_cast<PUCHAR>(const_cast<void*>(data)); }

/// key = SHA-256(label, key blob): each use has a label of its own, so no key reveals another.
bool DeriveKey(std::string_view label, const char* keyBlob, Key& key) noexcept {
  const AlgorithmHandle algorithm = OpenAlgorithm(BCRYPT_SHA256_ALGORITHM);
  BCRYPT_HASH_HANDLE created = nullptr;
  if (!algorithm || !BCRYPT_SUCCESS(BCryptCreateHash(algorithm.Get(), &created, nullptr, 0, nullptr, 0, 0)))
    return false;
  const HashHandle hash(created);
  return BCRYPT_SUCCESS(BCryptHashData(created, BytesOf(label.data()), static_cast<ULONG>(label.size()), 0)) &&
         BCRYPT_SUCCESS(BCryptHashData(created, BytesOf(keyBlob), kBlobLength, 0)) &&
         BCRYPT_SUCCESS(BCryptFinishHash(created, key.bytes, kKeySize, 0));
}

/// AES-256-CBC in place. The vector comes from the key blob too: a buffer has no space for one, and the same text must
/// give the same cipher text.
bool Cipher(void* buffer, ULONG length, const char* keyBlob, Direction direction) noexcept {
  using namespace std::string_view_literals;
  Key key, vector;  // the first bytes of the second are the vector
  if (!DeriveKey(""sv, keyBlob, key) || !DeriveKey("ApiCr buffer vector\0"sv, keyBlob, vector)) return false;
  const AlgorithmHandle algorithm = OpenAlgorithm(BCRYPT_AES_ALGORITHM);
  wchar_t mode[] = BCRYPT_CHAIN_MODE_CBC;
  BCRYPT_KEY_HANDLE created = nullptr;
  if (!algorithm ||
      !BCRYPT_SUCCESS(BCryptSetProperty(algorithm.Get(), BCRYPT_CHAINING_MODE, BytesOf(mode), sizeof mode, 0)) ||
      !BCRYPT_SUCCESS(BCryptGenerateSymmetricKey(algorithm.Get(), &created, nullptr, 0, key.bytes, kKeySize, 0)))
    return false;
  const KeyHandle handle(created);
  PUCHAR const bytes = BytesOf(buffer);
  ULONG done = 0;
  return length == 0 || (BCRYPT_SUCCESS(direction(created, bytes, length, nullptr, vector.bytes, kBlockSize, bytes,
                                                  length, &done, 0)) &&
                         done == length);
}

void Run(Direction direction, void* buffer, std::uint32_t length, const char* keyBlob, std::uint32_t zero,
         std::int32_t* error) noexcept {
  const win::KeptLastError kept;
  const bool isBlob = keyBlob != nullptr && strnlen(keyBlob, kBlobLength + 1) == kBlobLength;
  std::int32_t result = APICR_SUCCESS;
  if ((buffer == nullptr && length != 0) || !isBlob || zero != 0) {
    result = APICR_BAD_ARGUMENT;
  } else if (length % kBlockSize != 0) {
    result = APICR_BAD_LENGTH;
  } else if (!Cipher(buffer, length, keyBlob, direction)) {
    result = APICR_PLATFORM_FAILURE;
  }
  if (error != nullptr) *error = result;
}

}  // namespace

extern "C" {

void KE_SIBLING_CALL APIcr_EncryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t zero,
                                         int32_t* error) {
  Run(BCryptEncrypt, buffer, length, keyBlob, zero, error);
}

void KE_SIBLING_CALL APIcr_DecryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t zero,
                                         int32_t* error) {
  Run(BCryptDecrypt, buffer, length, keyBlob, zero, error);
}

// Plain C functions without parameters: arguments are the caller's to clean up.
#define SKIP(name, presence)
#define NOT_SUPPORTED(name, presence) \
  int32_t KE_SIBLING_CALL name(void) { return APICR_NOT_SUPPORTED; }
KE_CRYPTO_FUNCTIONS(SKIP, NOT_SUPPORTED)

}  // extern "C"
