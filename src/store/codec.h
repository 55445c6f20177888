// The key blobs of the product, opaque texts that only the crypto module understands. Supplied at configure time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "win/file.h"
#include "win/replace_file.h"

namespace store {

inline constexpr std::size_t kKeyBlobLength = 188;  // base64 characters

extern const char kFileKeyBlob[kKeyBlobLength + 1];     // enciphered INI files and the integration store
extern const char kSettingKeyBlob[kKeyBlobLength + 1];  // single enciphered settings

// Enciphering in place, through the crypto module.

inline constexpr std::int32_t kDecipherUnavailable = 4;
inline constexpr std::int32_t kEncipherUnavailable = 99999999;

/// Deciphers `length` bytes in place, taken as whole blocks with zero bytes behind. 0, the crypto module's error, or
/// kDecipherUnavailable when the module is not bound; the data is unchanged unless the result is 0. Throws when memory
/// runs out.
std::int32_t DecryptBufferInPlace(char* data, std::size_t length, const char* keyBlob);

/// Enciphers likewise; kEncipherUnavailable when the module is not bound.
std::int32_t EncryptBufferInPlace(char* data, std::size_t length, const char* keyBlob);

// Reading and writing the content of a store's file; what the integration store and the other enciphered INI files
// share.

/// The whole content of an open file; none when its size cannot be told or fewer bytes arrive. Throws when memory runs
/// out.
std::optional<std::string> ReadContent(const win::FileHandle& file);

/// Replaces the content of a file (`win::ReplaceContent`). A file that cannot be opened or is overwritten in place is
/// traced under `function`.
win::Replaced ReplaceContent(const std::string& path, std::string_view content, const win::FileStatus& like,
                             const char* function);

/// Replaces the content of a file by that of `source`; true when all of it is in place. The attributes come from the
/// source. Throws when memory runs out, before the file was touched.
bool ReplaceByCopy(const std::string& source, const std::string& path, const char* function);

enum class Deciphering { kDone, kCryptoNotLoaded, kFailed };

/// Replaces the content of a file by the text it stands for. Marked content is deciphered with the file key blob, after
/// the crypto module was bound from `cryptoFolder`; other content is taken as the text itself. The text ends at its
/// first zero byte. Unless the result is kDone, the content is unchanged.
Deciphering DecipherContent(std::string& content, const char* cryptoFolder);

enum class TextForm { kEnciphered, kPlainWithoutCrypto, kPlainAfterFailure };

/// The content for a store's file, ready to be written.
struct PreparedContent {
  std::string bytes;  // the marker and the enciphered blocks, or the plain text
  TextForm form;
};

/// Enciphers a text with the file key blob, after the crypto module was bound from `cryptoFolder`. When that cannot be
/// done, the content is the plain text. An empty line before the text may be added. Traces the outcome under
/// `function`. Throws when memory runs out.
PreparedContent PrepareContent(std::string text, const char* cryptoFolder, const char* function);

/// Traces under `function` how much of the content went out: `written` bytes of the file. Plain text is only traced
/// when it is `whole`.
void TraceWritten(const PreparedContent& content, std::size_t written, bool whole, const char* function);

}  // namespace store
