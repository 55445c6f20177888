// Encrypted INI files at a path of the caller: whole stores, and single values.
#pragma once

#include <cstdint>

#include "KEResults.h"
#include "store/ini_store.h"

namespace store {

/// Results of the two file operations.
enum FileResult : std::int32_t {
  kFileDone = 0,
  kFileNoMemory = 1,         // reading: no memory for the content
  kFileNotOpened = 2,        // not opened or not created; reading: not read completely
  kFileCryptoNotLoaded = 3,  // reading: the file is encrypted and the crypto module cannot be loaded
  kFileCipherFailed = 5,     // decryption failed; writing: encryption failed and the text was written in plain
  kFileNoStore = 6,          // no store given
};

/// Appends the sections and entries of the file at `path` to the store. A missing file is created empty and is a
/// success. A file that cannot be decrypted is not changed. The crypto module comes from the product's Common folder.
/// Not thread-safe for one store.
FileResult ReadEncryptedFile(const char* path, IniStore* store);

/// Replaces the file at `path` atomically (`ReplaceContent`) by the text of the store: encrypted, or plain when the
/// crypto module cannot be loaded. A full disk is kFileDone too, and leaves the old content. When memory runs out
/// during encryption, the file is left empty and the result is kFileDone.
FileResult WriteEncryptedFile(const char* path, const IniStore* store);

/// The bodies of KE_GetEncryptedFileValue and KE_SetEncryptedFileValue, with their codes. Section and key are cut at
/// 255 characters.
KE_RESULT GetFileValue(const char* section, const char* key, char* buffer, std::int32_t size, const char* filePath);
KE_RESULT SetFileValue(const char* section, const char* key, const char* value, const char* filePath);

}  // namespace store
