#include "file_cipher.h"

#include <algorithm>
#include <cstring>

#include "key_blob.h"
#include "sharedfile/replacement.h"

namespace apicr {
namespace {

using namespace std::string_view_literals;
using namespace sharedfile;

constexpr char kMagic[8] = {'A', 'p', 'i', 'C', 'r', 'F', '0', '1'};
constexpr std::size_t kPieceSize = 16 * 1024;
static_assert(kPieceSize % kBlockSize == 0);

struct Header {
  char magic[sizeof kMagic];
  std::uint8_t vector[kBlockSize];
};
static_assert(sizeof(Header) == 24, "the file format");

struct Keys {
  Key encryption;
  Key authentication;

  bool Derive(const char* keyBlob) noexcept {
    return DeriveKey("ApiCr file encryption\0"sv, keyBlob, encryption) &&
           DeriveKey("ApiCr file authentication\0"sv, keyBlob, authentication);
  }
};

/// Adds PKCS #7 padding, for which there is room, and returns the padded length.
std::size_t Pad(std::uint8_t* data, std::size_t length) noexcept {
  const std::size_t padding = kBlockSize - length % kBlockSize;
  std::memset(data + length, static_cast<int>(padding), padding);
  return length + padding;
}

/// Takes the padding off `length`; false, with `length` unchanged, when it is not well formed.
bool Unpad(const std::uint8_t* data, std::size_t& length) noexcept {
  const std::uint8_t padding = data[length - 1];
  if (padding == 0 || padding > kBlockSize) return false;
  const auto* const end = data + length;
  if (!std::all_of(end - padding, end, [&](std::uint8_t byte) { return byte == padding; })) return false;
  length -= padding;
  return true;
}

/// Takes the same time wherever the first difference is.
bool AreEqual(const std::uint8_t* a, const std::uint8_t* b, std::size_t length) noexcept {
  unsigned difference = 0;
  for (std::size_t i = 0; i < length; ++i) difference |= a[i] ^ b[i];
  return difference == 0;
}

std::int32_t EncryptStream(const win::FileHandle& source, Replacement& target, const char* keyBlob) noexcept {
  Keys keys;
  Header header;
  std::memcpy(header.magic, kMagic, sizeof kMagic);
  if (!FillRandomly(header.vector, sizeof header.vector) || !keys.Derive(keyBlob)) return APICR_PLATFORM_FAILURE;
  AesCbc cipher(keys.encryption, header.vector);
  Hash code(keys.authentication);
  if (!code.Add(&header, sizeof header)) return APICR_PLATFORM_FAILURE;
  if (!target.Write(&header, sizeof header)) return APICR_FILE_FAILURE;

  Secret<kPieceSize + kBlockSize> piece;
  std::size_t length = kPieceSize;
  while (length == kPieceSize) {  // a shorter piece, perhaps an empty one, is the last and takes the padding
    if (!ReadFully(source, piece.bytes, kPieceSize, length)) return APICR_FILE_FAILURE;
    const std::size_t padded = length < kPieceSize ? Pad(piece.bytes, length) : length;
    if (!cipher.Encrypt(piece.bytes, padded) || !code.Add(piece.bytes, padded)) return APICR_PLATFORM_FAILURE;
    if (!target.Write(piece.bytes, padded)) return APICR_FILE_FAILURE;
  }
  std::uint8_t tag[kHashSize];
  if (!code.Finish(tag)) return APICR_PLATFORM_FAILURE;
  return target.Write(tag, sizeof tag) ? APICR_SUCCESS : APICR_FILE_FAILURE;
}

/// The length of the enciphered text, 0 when a file of that size cannot be an enciphered one.
std::uint64_t CipherLength(const win::FileHandle& source) noexcept {
  LARGE_INTEGER size;
  constexpr LONGLONG kAround = sizeof(Header) + kHashSize;
  if (!GetFileSizeEx(source.Get(), &size) || size.QuadPart < kAround ||
      size.QuadPart % kBlockSize != kAround % kBlockSize)
    return 0;
  return static_cast<std::uint64_t>(size.QuadPart - kAround);
}

/// Deciphers into the replacement file while it computes the code. A wrong padding is reported only together with a
/// wrong code, after the same work.
std::int32_t DecryptStream(const win::FileHandle& source, Replacement& target, const char* keyBlob) noexcept {
  std::uint64_t remaining = CipherLength(source);
  if (remaining == 0) return APICR_NOT_AUTHENTIC;
  Header header;
  std::size_t length = 0;
  if (!ReadFully(source, &header, sizeof header, length) || length != sizeof header) return APICR_FILE_FAILURE;
  if (std::memcmp(header.magic, kMagic, sizeof kMagic) != 0) return APICR_NOT_AUTHENTIC;
  Keys keys;
  if (!keys.Derive(keyBlob)) return APICR_PLATFORM_FAILURE;
  AesCbc cipher(keys.encryption, header.vector);
  Hash code(keys.authentication);
  if (!code.Add(&header, sizeof header)) return APICR_PLATFORM_FAILURE;

  Secret<kPieceSize> piece;
  bool wellFormed = true;
  while (remaining > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(remaining, kPieceSize));
    if (!ReadFully(source, piece.bytes, wanted, length) || length != wanted) return APICR_FILE_FAILURE;
    if (!code.Add(piece.bytes, length) || !cipher.Decrypt(piece.bytes, length)) return APICR_PLATFORM_FAILURE;
    remaining -= length;
    if (remaining == 0) wellFormed = Unpad(piece.bytes, length);
    if (!target.Write(piece.bytes, length)) return APICR_FILE_FAILURE;
  }
  std::uint8_t stored[kHashSize];
  std::uint8_t computed[kHashSize];
  if (!ReadFully(source, stored, sizeof stored, length) || length != sizeof stored) return APICR_FILE_FAILURE;
  if (!code.Finish(computed)) return APICR_PLATFORM_FAILURE;
  return AreEqual(stored, computed, kHashSize) && wellFormed ? APICR_SUCCESS : APICR_NOT_AUTHENTIC;
}

using Stream = std::int32_t (*)(const win::FileHandle&, Replacement&, const char*) noexcept;

/// The source is closed before the replacement is put in place: they may be the same file.
std::int32_t Replace(const char* source, const char* target, const char* keyBlob, Stream stream) noexcept {
  win::FileHandle input = OpenSource(source);
  if (!input) return APICR_FILE_FAILURE;
  Replacement replacement(target);
  const std::int32_t result = stream(input, replacement, keyBlob);
  input.Reset();
  if (result != APICR_SUCCESS) return result;
  return replacement.PutInPlace() ? APICR_SUCCESS : APICR_FILE_FAILURE;
}

}  // namespace

std::int32_t EncryptFile(const char* source, const char* target, const char* keyBlob) noexcept {
  return Replace(source, target, keyBlob, EncryptStream);
}

std::int32_t DecryptFile(const char* source, const char* target, const char* keyBlob) noexcept {
  return Replace(source, target, keyBlob, DecryptStream);
}

}  // namespace apicr
