#include "diagnosis/file_checks.h"

#include <windows.h>

#include "code_page.h"
#include "store/codec.h"
#include "store/ini_store.h"
#include "win/file.h"

namespace kelctl {
namespace {

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
  finding.detail = std::to_string(count) + (count == 1 ? " section" : " sections");
  if (count > 0 || content.empty()) finding.health = Health::kOk;
}

}  // namespace

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
    finding.detail = "cannot be opened or read (Windows error " + std::to_string(error) + ")";
  }
  return finding;
}

}  // namespace kelctl
