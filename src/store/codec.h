// The files of a store: encryption with the key blobs of the product, examining, replacing.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/ini_store.h"
#include "win/file.h"
#include "win/replace_file.h"

namespace store {

inline constexpr std::size_t kKeyBlobLength = 188;  // base64 characters

// Opaque texts that only the crypto module understands, supplied at configure time.
extern const char kFileKeyBlob[kKeyBlobLength + 1];     // encrypted INI files and the integration store
extern const char kSettingKeyBlob[kKeyBlobLength + 1];  // single encrypted settings

inline constexpr std::int32_t kDecryptionUnavailable = 4;
inline constexpr std::int32_t kEncryptionUnavailable = 99999999;

/// Decrypts `length` bytes in place, as whole blocks padded with zero bytes. 0, the crypto module's error, or
/// kDecryptionUnavailable when the module is not bound; the data is unchanged unless the result is 0. Throws when memory
/// runs out.
std::int32_t DecryptBufferInPlace(char* data, std::size_t length, const char* keyBlob);

/// Encrypts in the same way; kEncryptionUnavailable when the module is not bound.
std::int32_t EncryptBufferInPlace(char* data, std::size_t length, const char* keyBlob);

/// The state of a store's file. The first two have no content, the next two a content that cannot be decrypted.
enum class FileState {
  kMissing,
  kUnreadable,
  kCryptoNotLoaded,
  kDecryptionFailed,  // another key, or damage
  kDamaged,           // fewer than `kFewestSections` sections
  kComplete,
};

/// A store's file, read, decrypted and parsed.
struct ExaminedFile {
  FileState state = FileState::kMissing;
  DWORD error = 0;         // of Windows, for a file without content
  bool encrypted = false;  // the content is marked as encrypted
  IniStore store;          // its text, unless the content could not be read or decrypted

  bool HasText() const noexcept { return state >= FileState::kDamaged; }
};

/// Examines a file, and changes nothing. Marked content is decrypted with the file key blob, after the crypto module was
/// bound from `cryptoFolder`; other content is the text itself. The text ends at its first zero byte. Throws when memory
/// runs out.
ExaminedFile ExamineFile(const std::string& path, const char* cryptoFolder);

/// The same for an open file, which is closed before it is decrypted.
ExaminedFile ExamineFile(win::FileHandle file, const char* cryptoFolder);

/// The whole content of an open file; none when it cannot be read completely. Throws when memory runs out.
std::optional<std::string> ReadContent(const win::FileHandle& file);

/// Replaces the content of a file (`win::ReplaceContent`). A file that cannot be opened or is overwritten in place is
/// traced under `function`.
win::Replaced ReplaceContent(const std::string& path, std::string_view content, const win::FileStatus& like,
                             const char* function);

/// Replaces the content of a file by that of `source`; true when all of it is in place. The attributes come from the
/// source. Throws when memory runs out, before the file was touched.
bool ReplaceByCopy(const std::string& source, const std::string& path, const char* function);

enum class TextForm { kEncrypted, kPlainWithoutCrypto, kPlainAfterFailure };

/// The content for a store's file, ready to be written.
struct PreparedContent {
  std::string bytes;  // the marker and the encrypted blocks, or the plain text
  TextForm form;
};

/// Encrypts a text with the file key blob, after the crypto module was bound from `cryptoFolder`. If that fails, the
/// content is the plain text. An empty line before the text may be added. Traces the outcome under `function`. Throws
/// when memory runs out.
PreparedContent PrepareContent(std::string text, const char* cryptoFolder, const char* function);

/// Traces under `function` how much of the content was written: `written` bytes of the file. Plain text is only traced
/// when it is `complete`.
void TraceWritten(const PreparedContent& content, std::size_t written, bool complete, const char* function);

}  // namespace store
