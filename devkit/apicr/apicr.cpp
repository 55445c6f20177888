// ApiCr.dll: the exported functions. Each checks its arguments and reports through the error pointer; nothing in the
// module throws or keeps anything between two calls.
#include "ApiCr.h"

#include <cstring>

#include "cng.h"
#include "file_cipher.h"
#include "key_blob.h"
#include "sharedfile/replacement.h"

namespace apicr {
namespace {

using namespace std::string_view_literals;
using namespace sharedfile;

constexpr std::uint32_t kVersion = 1u << 16;  // 1.0: the second number is in the low word

void Report(std::int32_t* error, std::int32_t result) noexcept {
  if (error != nullptr) *error = result;
}

bool IsBlank(const char* text) noexcept { return text == nullptr || *text == '\0'; }

std::int32_t HashBuffer(const void* data, std::uint32_t length, std::uint8_t* output) noexcept {
  if ((data == nullptr && length != 0) || output == nullptr) return APICR_BAD_ARGUMENT;
  Hash hash;
  std::uint8_t result[kHashSize];
  if (!hash.Add(data, length) || !hash.Finish(result)) return APICR_PLATFORM_FAILURE;
  std::memcpy(output, result, kHashSize);
  return APICR_SUCCESS;
}

std::int32_t HashFile(const char* path, std::uint8_t* output) noexcept {
  if (IsBlank(path) || output == nullptr) return APICR_BAD_ARGUMENT;
  const win::FileHandle file = OpenSource(path);
  Hash hash;
  std::uint8_t piece[16 * 1024];
  std::size_t length = 0;
  do {
    if (!file || !ReadFully(file, piece, sizeof piece, length)) return APICR_FILE_FAILURE;
    if (!hash.Add(piece, length)) return APICR_PLATFORM_FAILURE;
  } while (length == sizeof piece);
  std::uint8_t result[kHashSize];
  if (!hash.Finish(result)) return APICR_PLATFORM_FAILURE;
  std::memcpy(output, result, kHashSize);
  return APICR_SUCCESS;
}

std::int32_t RandomKey(char* keyBlob, std::uint32_t size) noexcept {
  if (keyBlob == nullptr || size < APICR_KEY_BLOB_SIZE) return APICR_BAD_ARGUMENT;
  return MakeKeyBlob(*reinterpret_cast<char(*)[APICR_KEY_BLOB_SIZE]>(keyBlob)) ? APICR_SUCCESS : APICR_PLATFORM_FAILURE;
}

using Direction = bool (AesCbc::*)(std::uint8_t*, std::uint32_t) noexcept;

/// The initialisation vector comes from the key blob too: the buffer has no room for one, and the same text must give
/// the same cipher text. Two texts under one key blob that begin alike therefore begin alike when enciphered.
std::int32_t CipherBuffer(void* buffer, std::uint32_t length, const char* keyBlob, std::uint32_t zero,
                          Direction direction) noexcept {
  if ((buffer == nullptr && length != 0) || !IsKeyBlob(keyBlob) || zero != 0) return APICR_BAD_ARGUMENT;
  if (length % kBlockSize != 0) return APICR_BAD_LENGTH;
  Key key;
  Key vectorSource;
  if (!DeriveKey(""sv, keyBlob, key) || !DeriveKey("ApiCr buffer vector\0"sv, keyBlob, vectorSource)) {
    return APICR_PLATFORM_FAILURE;
  }
  std::uint8_t vector[kBlockSize];
  std::memcpy(vector, vectorSource.bytes, kBlockSize);
  AesCbc cipher(key, vector);
  return (cipher.*direction)(static_cast<std::uint8_t*>(buffer), length) ? APICR_SUCCESS : APICR_PLATFORM_FAILURE;
}

bool AreFileArguments(const char* source, const char* target, const char* keyBlob) noexcept {
  return !IsBlank(source) && !IsBlank(target) && IsKeyBlob(keyBlob);
}

/// The public-key functions: there is no output, so its length is none.
void ReportNotSupported(std::uint32_t* targetLength, std::int32_t* error) noexcept {
  if (targetLength != nullptr) *targetLength = 0;
  Report(error, APICR_NOT_SUPPORTED);
}

void Clear(char* text, std::uint32_t size) noexcept {
  if (text != nullptr && size != 0) *text = '\0';
}

}  // namespace
}  // namespace apicr

using namespace apicr;

extern "C" {

uint32_t KE_SIBLING_CALL APIcr_GetVersion(void) { return kVersion; }

void KE_SIBLING_CALL APIcr_GetHash(const void* data, uint32_t length, uint8_t* hash, int32_t* error) {
  Report(error, HashBuffer(data, length, hash));
}

void KE_SIBLING_CALL APIcr_GetHashFromFile(const char* path, uint8_t* hash, int32_t* error) {
  Report(error, HashFile(path, hash));
}

void KE_SIBLING_CALL APIcr_GetRandomKey(char* keyBlob, uint32_t keyBlobSize, int32_t* error) {
  Report(error, RandomKey(keyBlob, keyBlobSize));
}

void KE_SIBLING_CALL APIcr_EncryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t zero,
                                         int32_t* error) {
  Report(error, CipherBuffer(buffer, length, keyBlob, zero, &AesCbc::Encrypt));
}

void KE_SIBLING_CALL APIcr_DecryptBuffer(void* buffer, uint32_t length, const char* keyBlob, uint32_t zero,
                                         int32_t* error) {
  Report(error, CipherBuffer(buffer, length, keyBlob, zero, &AesCbc::Decrypt));
}

void KE_SIBLING_CALL APIcr_EncryptFile(const char* source, const char* target, const char* keyBlob, int32_t* error) {
  Report(error, AreFileArguments(source, target, keyBlob) ? EncryptFile(source, target, keyBlob) : APICR_BAD_ARGUMENT);
}

void KE_SIBLING_CALL APIcr_DecryptFile(const char* source, const char* target, const char* keyBlob, int32_t* error) {
  Report(error, AreFileArguments(source, target, keyBlob) ? DecryptFile(source, target, keyBlob) : APICR_BAD_ARGUMENT);
}

void KE_SIBLING_CALL APIcr_EncryptWithPublic(const void*, uint32_t, void*, uint32_t* targetLength, const char*,
                                             int32_t* error) {
  ReportNotSupported(targetLength, error);
}

void KE_SIBLING_CALL APIcr_DecryptWithPrivate(const void*, uint32_t, void*, uint32_t* targetLength, const char*,
                                              int32_t* error) {
  ReportNotSupported(targetLength, error);
}

void KE_SIBLING_CALL APIcr_EncryptHash(const uint8_t*, void*, uint32_t* targetLength, const char*, int32_t* error) {
  ReportNotSupported(targetLength, error);
}

void KE_SIBLING_CALL APIcr_DecryptHash(const void*, uint32_t, uint8_t*, const char*, int32_t* error) {
  ReportNotSupported(nullptr, error);
}

void KE_SIBLING_CALL APIcr_MakeKeys(char* publicKeyBlob, uint32_t publicKeyBlobSize, char* privateKeyBlob,
                                    uint32_t privateKeyBlobSize, int32_t* error) {
  Clear(publicKeyBlob, publicKeyBlobSize);
  Clear(privateKeyBlob, privateKeyBlobSize);
  ReportNotSupported(nullptr, error);
}

}  // extern "C"
