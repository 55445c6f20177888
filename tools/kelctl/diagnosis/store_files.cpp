#include "diagnosis/store_files.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>

#include "diagnosis/log_file.h"
#include "diagnosis/zip_archive.h"
#include "errors.h"
#include "siblings/modules.h"
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

// Sets the outcome for the content of a settings file: the number of its sections, or why it is not an INI file.
void CheckContent(const std::string& content, Finding& finding) {
  finding.health = Health::kFailure;
  finding.code = "SETTINGS-INVALID";
  store::IniStore sections;
  store::ParseIni(content, sections);
  finding.detail = Counted(sections.sections.size(), "section");
  const bool utf16 = content.starts_with("\xff\xfe");
  if (utf16) finding.detail = "UTF-16 text, not examined";
  if (!utf16 && content.find('\0') != content.npos) {
    finding.detail = "not a text";
  } else if (utf16 || content.empty() || !sections.sections.empty()) {
    finding.health = Health::kOk;
    finding.code = "OK";
  }
}

// The identity in the copy that the library reads. A copy that has a lost identifier is named.
Finding CheckIdentity(const StoreCopies& copies, const StoreCopy& used, bool fresh) {
  Finding finding{.kind = "store", .subject = "identity", .path = Utf8FromCodePage(used.path), .detail = ""};
  std::string missing, having;
  for (const CopyIdentity& value : IdentityOf(used)) {
    if (value.text.empty()) missing += (missing.empty() ? "" : ", ") + std::string(value.name);
  }
  for (const StoreCopy* const copy : {&copies.live, &copies.backup, &copies.start}) {
    if (!copy->AgentId().empty() && !IsNoise(*copy)) having += (having.empty() ? "" : " and ") + copy->file;
  }
  if (!used.AgentId().empty()) {
    finding.detail = "agent " + Utf8FromCodePage(used.AgentId()) + (missing.empty() ? "" : "; without " + missing);
    return finding;
  }
  finding.health = fresh && having.empty() ? Health::kWarning : Health::kFailure;
  finding.code = "IDENTITY-MISSING";
  finding.detail = used.file + " has no " + missing +
                   (having.empty() ? "; no copy has an agent-id" : "; the agent-id is in " + having);
  return finding;
}

// "agent-id A instead of B" for each value of the identity that differs in `copy` from the copy in use.
std::string DifferencesOf(const StoreCopy& copy, const StoreCopy& used, bool onlyIdentity) {
  std::string text;
  const auto mine = IdentityOf(copy), theirs = IdentityOf(used);
  const std::size_t count = onlyIdentity ? 2 : mine.size();  // agent and customer make the identity
  for (std::size_t i = 0; i < count; ++i) {
    if (mine[i].text == theirs[i].text) continue;
    const auto shown = [](const std::string& value) { return value.empty() ? "(none)" : Utf8FromCodePage(value); };
    text += (text.empty() ? "" : ", ") + std::string(mine[i].name) + " " + shown(mine[i].text) + " instead of " +
            shown(theirs[i].text);
  }
  return text;
}

void AddDifferences(const StoreCopies& copies, const StoreCopy& used, Findings& findings) {
  const auto add = [&](const StoreCopy& copy, const char* code, bool onlyIdentity) {
    if (&copy == &used || copy.state != CopyState::kRead || IsNoise(copy) || copy.store.sections.empty()) return;
    const std::string differences = DifferencesOf(copy, used, onlyIdentity);
    if (differences.empty()) return;
    findings.push_back({.kind = "store",
                        .subject = copy.file,
                        .path = Utf8FromCodePage(copy.path),
                        .health = Health::kWarning,
                        .code = code,
                        .detail = "written " + UtcTime(copy.written) + ", " + used.file + " " + UtcTime(used.written) +
                                  ": " + differences});
  };
  add(copies.backup, "BACKUP-OLDER", false);
  add(copies.start, "START-DIFFERS", true);
}

}  // namespace

StoreCopy ReadStoreCopy(const Product& product, const std::string& file) {
  StoreCopy copy{.file = file, .path = product.Path({"KESAgent", file}), .store = {}};
  const win::FileStatus status = win::StatusOf(copy.path);
  if (!status.exists) return copy;
  copy.size = status.size;
  copy.written = status.written;
  copy.readOnly = (status.attributes & FILE_ATTRIBUTE_READONLY) != 0;
  win::FileHandle handle = win::OpenForReading(copy.path);
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
  siblings::LoadCrypto(product.Folder("").c_str());  // a plain store has encrypted settings too
  for (const StoreCopy* const copy : {&copies.live, &copies.backup, &copies.start}) AddSecrets(redactor, copy->store);
  for (const ProductFile& file : product.SettingsFiles()) {
    store::IniStore settings;
    store::ParseIni(EndOfFile(product.Path(file), kLargestFile).value_or(""), settings);
    AddSecrets(redactor, settings);
  }
  return redactor;
}

Finding CheckStoreCopy(const StoreCopy& copy, const StoreCopies& copies, Health whenMissing) {
  Finding finding{.kind = "store",
                  .subject = copy.file,
                  .path = Utf8FromCodePage(copy.path),
                  .health = Health::kFailure,
                  .detail = Describe(copy)};
  switch (copy.state) {
    case CopyState::kMissing:
      finding.health = whenMissing;
      finding.code = "STORE-MISSING";
      return finding;
    case CopyState::kUnreadable:
      SetUnreadable(finding, copy.path, copy.error, "STORE-UNREADABLE");
      return finding;
    case CopyState::kCryptoNotLoaded:
      finding.code = "STORE-NO-CRYPTO";
      return finding;
    case CopyState::kNotDeciphered:
      finding.code = "STORE-NOT-DECRYPTED";
      return finding;
    case CopyState::kRead:
      break;
  }
  if (IsNoise(copy)) {
    finding.code = "STORE-NOISE";
  } else if (IsIncomplete(copy, copies)) {
    finding.health = Health::kWarning;
    finding.code = "STORE-INCOMPLETE";
    finding.detail = "incomplete: " + finding.detail + "; nothing is lost";
  } else if (!copy.IsWhole()) {
    finding.code = "STORE-DAMAGED";
    finding.detail = "damaged: " + finding.detail;
  } else {
    finding.health = copy.marked ? Health::kOk : Health::kWarning;
    finding.code = copy.marked ? "OK" : "STORE-PLAIN";
  }
  if (copy.readOnly) {
    finding.health = Health::kFailure;
    finding.code = "READ-ONLY";
    finding.detail += ", read-only";
  }
  return finding;
}

Findings CheckStore(const StoreCopies& copies) {
  const bool fresh = IsFresh(copies);
  Findings findings = {
      CheckStoreCopy(copies.live, copies,
                     copies.backup.state == CopyState::kMissing && fresh ? Health::kWarning : Health::kFailure),
      CheckStoreCopy(copies.backup, copies, Health::kWarning), CheckStoreCopy(copies.start, copies, Health::kWarning)};
  const StoreCopy* const used = FileOf(copies, ChooseCopy(copies).copy);
  if (used && !IsNoise(*used)) {
    findings.push_back(CheckIdentity(copies, *used, fresh));
    AddDifferences(copies, *used, findings);
  }
  return findings;
}

bool IsFresh(const StoreCopies& copies) {
  if (copies.live.state == CopyState::kMissing) {
    return copies.backup.state == CopyState::kMissing && copies.start.state == CopyState::kMissing;
  }
  return IsIncomplete(copies.live, copies);
}

std::vector<CopyIdentity> IdentityOf(const StoreCopy& copy) {
  const std::string certificate = copy.Value("INTEGRATION", "CERTIFICATE");
  char checksum[24] = "";
  if (!certificate.empty())
    std::snprintf(checksum, sizeof checksum, "crc32 %08x", static_cast<unsigned>(Crc32(certificate)));
  return {{"agent-id", copy.AgentId()},
          {"customer-id", copy.Value("INTEGRATION", "CUSTOMER")},
          {"device-id", copy.Value("INTEGRATION", "DEVICEID")},
          {"certificate", checksum},
          {"integrated", copy.Value("INTEGRATION", "Date")},
          {"install-state", copy.Value("INSTALL", "State")},
          {"agent-version", copy.Value("AGENT", "VERSION")}};
}

std::string RenderCopies(const StoreCopies& copies) {
  std::string text;
  for (const StoreCopy* const copy : {&copies.live, &copies.backup, &copies.start}) {
    text += Padded(copy->file, 15) + Describe(*copy);
    if (copy->state != CopyState::kMissing) text += ", written " + UtcTime(copy->written);
    if (copy->state == CopyState::kRead && !IsNoise(*copy)) {
      for (const CopyIdentity& value : IdentityOf(*copy)) {
        if (!value.text.empty())
          text += std::string(", ") + value.name + " " + WithoutControlCharacters(Utf8FromCodePage(value.text));
      }
      if (copy->AgentId().empty()) text += ", no agent-id";
    }
    text += "\n";
  }
  return text;
}

nlohmann::ordered_json JsonOf(const StoreCopies& copies) {
  auto list = nlohmann::ordered_json::array();
  for (const StoreCopy* const copy : {&copies.live, &copies.backup, &copies.start}) {
    auto values = nlohmann::ordered_json::object();
    for (const CopyIdentity& value : IdentityOf(*copy)) values[value.name] = Utf8FromCodePage(value.text);
    list.push_back({{"file", copy->file},
                    {"code", CheckStoreCopy(*copy, copies, Health::kWarning).code},
                    {"whole", copy->IsWhole()},
                    {"detail", Describe(*copy)},
                    {"written", copy->state == CopyState::kMissing ? "" : UtcTime(copy->written)},
                    {"size", copy->size},
                    {"values", std::move(values)}});
  }
  return list;
}

Finding CheckSettingsFile(const Product& product, const ProductFile& file) {
  const std::string path = product.Path(file);
  Finding finding{.kind = "settings",
                  .subject = (file.folder.empty() ? "" : file.folder + "\\") + file.file,
                  .path = Utf8FromCodePage(path),
                  .health = Health::kWarning,
                  .code = "SETTINGS-MISSING",
                  .detail = "missing"};
  if (!win::Exists(path)) return finding;
  const win::FileHandle handle = win::OpenForReading(path);
  const DWORD error = handle ? ERROR_READ_FAULT : GetLastError();
  const auto content = handle ? store::ReadContent(handle) : std::nullopt;
  if (content) {
    CheckContent(*content, finding);
  } else {
    SetUnreadable(finding, path, error, "SETTINGS-UNREADABLE");
  }
  return finding;
}

}  // namespace kelctl
