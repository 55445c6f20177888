#include "diagnosis/store_files.h"

#include <windows.h>

#include <algorithm>

#include "code_page.h"
#include "diagnosis/log_file.h"
#include "errors.h"
#include "store/codec.h"
#include "store/ini_store.h"
#include "store/setting_codec.h"

namespace kelctl {
namespace {

constexpr std::uint64_t kLargestFile =
    std::uint64_t{64} * 1024 * 1024;  // bytes; no store and no settings file comes near

void AddForms(Redactor& redactor, const std::string& secret) {
  redactor.AddSecret(secret);
  redactor.AddSecret(Utf8FromCodePage(secret));
  // Most secrets are settings; what is none deciphers to noise or not at all.
  std::string plain = secret + std::string(4, '\0');
  if (store::DecryptSetting(plain.data(), static_cast<std::int32_t>(plain.size())) != KE_SUCCESS) return;
  plain.resize(std::min(plain.find('\0'), plain.size()));
  redactor.AddSecret(plain);
  try {
    redactor.AddSecret(CodePageFromUtf8(plain));
  } catch (const UsageError&) {
    // The code page cannot spell it, and so no text in the code page holds it.
  }
}

void AddSecrets(Redactor& redactor, const store::IniStore& store) {
  for (const auto& section : store.sections) {
    for (const auto& entry : section.entries) {
      if (NamesSecret(section.name) || NamesSecret(entry.key)) AddForms(redactor, std::string(entry.value));
    }
  }
}

}  // namespace

StoreCopy ReadStoreCopy(const Product& product, const std::string& file) {
  StoreCopy copy{.file = file, .path = product.Path({"KESAgent", file}), .store = {}};
  const win::FileStatus status = win::StatusOf(copy.path);
  if (!status.exists) return copy;
  copy.size = status.size;
  win::FileHandle handle = win::OpenForUpdate(copy.path);
  if (!handle || copy.size > kLargestFile) {
    copy.error = handle ? ERROR_READ_FAULT : GetLastError();
    copy.state = CopyState::kUnreadable;
    return copy;
  }
  store::ExaminedFile examined = store::ExamineFile(std::move(handle), product.Folder("").c_str());
  copy.error = examined.error;
  copy.marked = examined.encrypted;
  copy.state = examined.HasText()                                      ? CopyState::kRead
               : examined.state == store::FileState::kCryptoNotLoaded  ? CopyState::kCryptoNotLoaded
               : examined.state == store::FileState::kDecryptionFailed ? CopyState::kNotDeciphered
                                                                       : CopyState::kUnreadable;
  copy.store = std::move(examined.store);
  return copy;
}

StoreCopies ReadStoreCopies(const Product& product) {
  return {ReadStoreCopy(product, "INTEGRA.DAT"), ReadStoreCopy(product, "INTEGRA.BAK"),
          ReadStoreCopy(product, "INTEGRA.START")};
}

Redactor MakeRedactor(const Product& product, const StoreCopies& copies) {
  Redactor redactor;
  for (const StoreCopy* const copy : {&copies.live, &copies.backup, &copies.start}) AddSecrets(redactor, copy->store);
  for (const ProductFile& file : product.SettingsFiles()) {
    store::IniStore settings;
    store::ParseIni(EndOfFile(product.Path(file), kLargestFile).value_or(""), settings);
    AddSecrets(redactor, settings);
  }
  return redactor;
}

}  // namespace kelctl
