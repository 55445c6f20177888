#include "store/value_file.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
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

using trace::kInfo;
using trace::Trace;

// The folder of the product's crypto module. Without an install path there is none: nothing is ever searched below the
// current directory.
class ProductCryptoFolder {
 public:
  ProductCryptoFolder() : path_(kelcrt::CProductInfo().GetInstallPath()) {
    if (!path_.empty()) path_ += "Common\\";
  }
  const char* Get() const noexcept { return path_.empty() ? nullptr : path_.c_str(); }

 private:
  std::string path_;
};

FileResult Read(const char* path, IniStore& store) {
  win::FileHandle file = win::OpenOrCreate(path);
  if (!file) return kFileNotOpened;
  ExaminedFile examined;
  try {
    examined = ExamineFile(std::move(file), ProductCryptoFolder().Get());
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
    content = PrepareContent(std::move(text), ProductCryptoFolder().Get(), function);
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

using trace::kDetail;
using trace::Trace;

constexpr std::size_t kLongestName = 255;  // characters

std::string CutName(const char* name) { return {name, strnlen(name, kLongestName)}; }

// An empty store; null, and traced, when there is no memory for it.
std::unique_ptr<IniStore> NewStore(const char* function) noexcept {
  std::unique_ptr<IniStore> store(new (std::nothrow) IniStore);
  if (!store) Trace(kDetail, function, "Could not create IniFile");
  return store;
}

}  // namespace

KE_RESULT GetFileValue(const char* section, const char* key, char* buffer, std::int32_t size, const char* filePath) {
  constexpr char kFunction[] = "KE_GetEncryptedFileValue";
  if (section == nullptr || key == nullptr || buffer == nullptr || text::IsBlank(filePath)) return KE_MISSING_ARGUMENT;
  const auto store = NewStore(kFunction);
  if (!store) return KE_NOT_CREATED;
  if (size <= 0) return KE_BUFFER_TOO_SMALL;
  if (ReadEncryptedFile(filePath, store.get()) != kFileDone) return KE_CRYPTO_FAILED;
  const IniEntry* entry = LookupEntry(*store, CutName(section).c_str(), CutName(key).c_str(), false);
  if (entry && !entry->value.empty()) return CopyOut(entry->value, buffer, size);
  Trace(kDetail, kFunction, "Could not get value or it is empty");
  return KE_STORE_UNUSABLE;
}

KE_RESULT SetFileValue(const char* section, const char* key, const char* value, const char* filePath) {
  constexpr char kFunction[] = "KE_SetEncryptedFileValue";
  if (section == nullptr || key == nullptr || value == nullptr || text::IsBlank(filePath)) return KE_MISSING_ARGUMENT;
  const auto store = NewStore(kFunction);
  if (!store) return KE_NOT_CREATED;
  if (ReadEncryptedFile(filePath, store.get()) != kFileDone) return KE_CRYPTO_FAILED;
  if (!SetValue(*store, CutName(section).c_str(), CutName(key).c_str(), value)) return KE_CRYPTO_FAILED;
  if (WriteEncryptedFile(filePath, store.get()) == kFileDone) return KE_SUCCESS;
  Trace(kDetail, kFunction, "Could save info to EncryptedFile");
  return KE_CRYPTO_FAILED;
}

}  // namespace store
