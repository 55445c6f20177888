#include "store/encrypted_file.h"

#include <new>
#include <optional>
#include <string>

#include "frame/product_info.h"
#include "frame/trace.h"
#include "store/store_file.h"

namespace store {
namespace {

using frame::kInfo;
using frame::Trace;

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
  std::optional<std::string> content;
  try {
    content = ReadContent(file);
  } catch (const std::bad_alloc&) {
    return kFileNoMemory;
  }
  if (!content) return kFileNotOpened;
  file.Reset();
  switch (DecipherContent(*content, ProductCryptoFolder().Get())) {
    case Deciphering::kCryptoNotLoaded:
      return kFileCryptoNotLoaded;
    case Deciphering::kFailed:
      return kFileCipherFailed;
    case Deciphering::kDone:
      break;
  }
  ParseIni(*content, store);
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
  frame::RemoveLeftovers(path);
  const frame::Replaced replaced = ReplaceContent(path, content->bytes, win::StatusOf(path), function);
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

}  // namespace store
