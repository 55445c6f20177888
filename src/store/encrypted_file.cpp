#include "store/encrypted_file.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>
#include <string>

#include "store/accessors.h"
#include "store/codec.h"
#include "store/ini_store.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/module.h"

namespace store {

namespace {

using trace::kDetail;
using trace::kInfo;
using trace::Trace;

// The folder of the product's crypto module; none without an install path: nothing is loaded from below the current
// directory.
std::optional<std::string> ProductCryptoFolder() {
  std::string path = kelcrt::CProductInfo().GetInstallPath();
  if (path.empty()) return std::nullopt;
  return path + "Common\\";
}

FileResult Read(const char* path, IniStore& store) {
  win::FileHandle file = win::OpenOrCreate(path);
  if (!file) return kFileNotOpened;
  ExaminedFile examined;
  try {
    const auto folder = ProductCryptoFolder();
    examined = ExamineFile(std::move(file), folder ? folder->c_str() : nullptr);
  } catch (const std::bad_alloc&) {
    return kFileNoMemory;
  }
  if (examined.state == FileState::kCryptoNotLoaded) return kFileCryptoNotLoaded;
  if (examined.state == FileState::kDecryptionFailed) return kFileCipherFailed;
  if (!examined.HasText()) return kFileNotOpened;
  std::ranges::move(examined.store.texts, std::back_inserter(store.texts));
  std::ranges::move(examined.store.sections, std::back_inserter(store.sections));
  return kFileDone;
}

FileResult Write(const char* path, const IniStore& store, const char* function) {
  std::optional<PreparedContent> content;
  std::string text = Serialise(store);
  try {
    const auto folder = ProductCryptoFolder();
    content = PrepareContent(std::move(text), folder ? folder->c_str() : nullptr, function);
  } catch (const std::bad_alloc&) {
    return win::CreateForUpdate(path) ? kFileDone : kFileNotOpened;
  }
  win::RemoveLeftovers(path);
  const win::Replaced replaced = ReplaceContent(path, content->bytes, win::StatusOf(path), function);
  if (!replaced.opened) return kFileNotOpened;
  TraceWritten(*content, replaced.written, replaced.complete, function);
  return content->form == TextForm::kPlainAfterFailure ? kFileCipherFailed : kFileDone;
}

}  // namespace

FileResult ReadEncryptedFile(const char* path, IniStore* store) {
  Trace(kInfo, __func__, "Function start");
  const FileResult result = store ? Read(path, *store) : kFileNoStore;
  Trace(kInfo, __func__, "Function end");
  return result;
}

FileResult WriteEncryptedFile(const char* path, const IniStore* store) {
  Trace(kInfo, __func__, "Function start");
  const FileResult result = store ? Write(path, *store, __func__) : kFileNoStore;
  Trace(kInfo, __func__, "Function end");
  return result;
}

namespace {

constexpr std::size_t kLongestName = 255;  // characters

std::string CutName(const char* name) { return {name, strnlen(name, kLongestName)}; }

}  // namespace

KE_RESULT GetFileValue(const char* section, const char* key, char* buffer, std::int32_t size, const char* filePath) {
  constexpr char kFunction[] = "KE_GetEncryptedFileValue";
  if (section == nullptr || key == nullptr || buffer == nullptr || text::IsBlank(filePath)) return KE_MISSING_ARGUMENT;
  if (size <= 0) return KE_BUFFER_TOO_SMALL;
  IniStore store;
  if (ReadEncryptedFile(filePath, &store) != kFileDone) return KE_CRYPTO_FAILED;
  const IniEntry* entry = LookupEntry(store, CutName(section).c_str(), CutName(key).c_str(), false);
  if (entry && !entry->value.empty()) return CopyOut(entry->value, buffer, size);
  Trace(kDetail, kFunction, "Could not get value or it is empty");
  return KE_STORE_UNUSABLE;
}

KE_RESULT SetFileValue(const char* section, const char* key, const char* value, const char* filePath) {
  constexpr char kFunction[] = "KE_SetEncryptedFileValue";
  if (section == nullptr || key == nullptr || value == nullptr || text::IsBlank(filePath)) return KE_MISSING_ARGUMENT;
  IniStore store;
  if (ReadEncryptedFile(filePath, &store) != kFileDone) return KE_CRYPTO_FAILED;
  if (!SetValue(store, CutName(section).c_str(), CutName(key).c_str(), value)) return KE_CRYPTO_FAILED;
  if (WriteEncryptedFile(filePath, &store) == kFileDone) return KE_SUCCESS;
  Trace(kDetail, kFunction, "Could save info to EncryptedFile");
  return KE_CRYPTO_FAILED;
}

}  // namespace store
