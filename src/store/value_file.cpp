#include "store/value_file.h"

#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "frame/text.h"
#include "frame/trace.h"
#include "store/accessors.h"
#include "store/encrypted_file.h"
#include "store/ini_store.h"

namespace store {
namespace {

using frame::kDetail;
using frame::Trace;

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
  if (section == nullptr || key == nullptr || buffer == nullptr || frame::IsBlank(filePath)) return KE_MISSING_ARGUMENT;
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
  if (section == nullptr || key == nullptr || value == nullptr || frame::IsBlank(filePath)) return KE_MISSING_ARGUMENT;
  const auto store = NewStore(kFunction);
  if (!store) return KE_NOT_CREATED;
  if (ReadEncryptedFile(filePath, store.get()) != kFileDone) return KE_CRYPTO_FAILED;
  if (!SetValue(*store, CutName(section).c_str(), CutName(key).c_str(), value)) return KE_CRYPTO_FAILED;
  if (WriteEncryptedFile(filePath, store.get()) == kFileDone) return KE_SUCCESS;
  Trace(kDetail, kFunction, "Could save info to EncryptedFile");
  return KE_CRYPTO_FAILED;
}

}  // namespace store
