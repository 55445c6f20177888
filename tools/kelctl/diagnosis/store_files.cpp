#include "diagnosis/store_files.h"

#include <windows.h>

#include <algorithm>

#include "diagnosis/log_file.h"
#include "errors.h"
#include "store/codec.h"
#include "store/ini_store.h"
#include "store/setting_codec.h"
#include "texts.h"
#include "win/file.h"

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

// What is wrong with the content of a settings file, or how many sections it has.
void CheckContent(const std::string& content, Finding& finding) {
  finding.health = Health::kFailure;
  if (content.starts_with("\xff\xfe")) {
    finding.health = Health::kOk;
    finding.detail = "UTF-16 text, not examined";
    return;
  }
  if (content.find('\0') != content.npos) {
    finding.detail = "is no text";
    return;
  }
  store::IniStore sections;
  store::ParseIni(content, sections);
  const std::size_t count = sections.sections.size();
  finding.detail = Counted(count, "section");
  if (count > 0 || content.empty()) finding.health = Health::kOk;
}

}  // namespace

StoreCopy ReadStoreCopy(const Product& product, const std::string& file) {
  StoreCopy copy{.file = file, .path = product.Path({"KESAgent", file}), .store = {}};
  const win::FileStatus status = win::StatusOf(copy.path);
  if (!status.exists) return copy;
  copy.size = status.size;
  const win::FileHandle handle = win::OpenForUpdate(copy.path);
  auto content = handle && copy.size <= kLargestFile ? store::ReadContent(handle) : std::nullopt;
  if (!content) {
    copy.error = handle ? ERROR_READ_FAULT : GetLastError();
    copy.state = CopyState::kUnreadable;
    return copy;
  }
  copy.marked = store::IsMarked(*content);
  switch (store::DecipherContent(*content, product.Folder("").c_str())) {
    case store::Deciphering::kCryptoNotLoaded:
      copy.state = CopyState::kCryptoNotLoaded;
      break;
    case store::Deciphering::kFailed:
      copy.state = CopyState::kNotDeciphered;
      break;
    case store::Deciphering::kDone:
      copy.state = CopyState::kRead;
      store::ParseIni(*content, copy.store);
      break;
  }
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

Finding CheckStoreCopy(const StoreCopy& copy, Health whenMissing) {
  Finding finding{.kind = "store",
                  .subject = copy.file,
                  .path = Utf8FromCodePage(copy.path),
                  .health = Health::kFailure,
                  .detail = Describe(copy)};
  if (copy.state == CopyState::kMissing) {
    finding.health = whenMissing;
  } else if (copy.IsWhole()) {
    finding.health = copy.marked ? Health::kOk : Health::kWarning;
  } else if (copy.state == CopyState::kRead) {
    finding.detail = "damaged: " + finding.detail;
  }
  return finding;
}

Findings CheckStore(const StoreCopies& copies) {
  return {CheckStoreCopy(copies.live, Health::kFailure), CheckStoreCopy(copies.backup, Health::kWarning),
          CheckStoreCopy(copies.start, Health::kWarning)};
}

Finding CheckSettingsFile(const Product& product, const ProductFile& file) {
  const std::string path = product.Path(file);
  Finding finding{.kind = "settings",
                  .subject = (file.folder.empty() ? "" : file.folder + "\\") + file.file,
                  .path = Utf8FromCodePage(path),
                  .health = Health::kWarning,
                  .detail = "missing"};
  if (!win::Exists(path)) return finding;
  const win::FileHandle handle = win::OpenForUpdate(path);
  const DWORD error = handle ? ERROR_READ_FAULT : GetLastError();
  const auto content = handle ? store::ReadContent(handle) : std::nullopt;
  if (content) {
    CheckContent(*content, finding);
  } else {
    finding.health = Health::kFailure;
    finding.detail = "cannot be opened or read (" + WindowsError(error) + ")";
  }
  return finding;
}

}  // namespace kelctl
