// Reading and writing the content of a store's file; what the integration store and the other enciphered INI files
// share.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "store/ini_store.h"
#include "win/file.h"

namespace store {

/// The whole content of an open file; none when its size cannot be told or fewer bytes arrive. Throws when memory runs
/// out.
std::optional<std::string> ReadContent(const win::FileHandle& file);

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
/// done, the content is the plain text. Traces the outcome under `function`. Throws when memory runs out.
PreparedContent PrepareContent(std::string text, const char* cryptoFolder, const char* function);

/// Traces under `function` how much of the content went out: `written` bytes of the file. Plain text is only traced
/// when it is `whole`.
void TraceWritten(const PreparedContent& content, std::size_t written, bool whole, const char* function);

}  // namespace store
