#include "diagnosis/bundle.h"

#include <windows.h>
// After windows.h.
#include <wincrypt.h>

#include <algorithm>
#include <cstdio>

#include "diagnosis/examination.h"
#include "diagnosis/log_file.h"
#include "diagnosis/status.h"
#include "diagnosis/store_files.h"
#include "diagnosis/zip_archive.h"
#include "errors.h"
#include "registration/registration.h"
#include "text/text.h"
#include "texts.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/registry.h"

namespace kelctl {
namespace {

constexpr std::uint64_t kLongestLog = std::uint64_t{4} * 1024 * 1024;   // bytes
constexpr std::uint64_t kLongestSettings = std::uint64_t{1024} * 1024;  // bytes
constexpr std::size_t kErrors = 100;
constexpr std::size_t kMostFiles = 5000;

FatTime LocalFatTime() {
  SYSTEMTIME local;
  GetLocalTime(&local);
  FILETIME time;
  FatTime fat;
  if (!SystemTimeToFileTime(&local, &time) || !FileTimeToDosDateTime(&time, &fat.date, &fat.time)) return {};
  return fat;
}

std::string TimeText(const FILETIME& time) {
  return UtcTime((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
}

// SHA-256 in hexadecimal; empty for a file that cannot be read, and for a large one.
std::string HashOf(const std::string& path, std::uint64_t size) {
  constexpr std::uint64_t kLargestHashed = std::uint64_t{16} * 1024 * 1024;
  if (path.empty() || size > kLargestHashed) return {};
  const auto content = EndOfFile(path, kLargestHashed);
  HCRYPTPROV provider = 0;
  HCRYPTHASH hash = 0;
  BYTE digest[32] = {};
  DWORD length = sizeof digest;
  if (!content || !CryptAcquireContextW(&provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT)) return {};
  bool done = CryptCreateHash(provider, CALG_SHA_256, 0, 0, &hash) != FALSE;
  done = done &&
         CryptHashData(hash, reinterpret_cast<const BYTE*>(content->data()), static_cast<DWORD>(content->size()), 0);
  done = done && CryptGetHashParam(hash, HP_HASHVAL, digest, &length, 0);
  if (hash) CryptDestroyHash(hash);
  CryptReleaseContext(provider, 0);
  std::string text;
  for (const BYTE byte : digest) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return done ? text : std::string();
}

// The name in the code page; empty when the code page cannot spell it.
std::string CodePageName(const wchar_t* name) {
  try {
    return CodePageFromUtf8(Utf8FromWide(name));
  } catch (const UsageError&) {
    return {};
  }
}

void ListFolder(const std::string& folder, nlohmann::ordered_json& list) {
  WIN32_FIND_DATAW found;
  const std::string pattern = folder + "*";
  const std::wstring wide = WideFromUtf8(Utf8FromCodePage(pattern));
  const win::FindHandle search(FindFirstFileW(wide.c_str(), &found));
  if (!search) return;
  do {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
    const std::uint64_t size = (std::uint64_t{found.nFileSizeHigh} << 32) | found.nFileSizeLow;
    list.push_back({{"path", Utf8FromCodePage(folder) + Utf8FromWide(found.cFileName)},
                    {"size", size},
                    {"created", TimeText(found.ftCreationTime)},
                    {"written", TimeText(found.ftLastWriteTime)},
                    {"attributes", found.dwFileAttributes},
                    {"sha256", HashOf(folder + CodePageName(found.cFileName), size)}});
  } while (list.size() < kMostFiles && FindNextFileW(search.Get(), &found));
}

// The files in the folders of the library, the shared components, the siblings and the settings files, without their
// own subfolders.
std::vector<std::string> FoldersOf(const Product& product) {
  std::vector<std::string> folders = {"",         "Common",  "KESAgent", "Scheduler", "Scheduler\\Config",
                                      "KesLpmng", "KepWInst"};
  for (const ProductFile& file : product.SettingsFiles()) {
    const auto same = [&](const std::string& folder) { return text::SameName(folder, file.folder); };
    if (std::ranges::none_of(folders, same)) folders.push_back(file.folder);
  }
  return folders;
}

nlohmann::ordered_json ListFiles(const Product& product) {
  auto list = nlohmann::ordered_json::array();
  for (const std::string& folder : FoldersOf(product)) ListFolder(product.Folder(folder), list);
  return {{"files", std::move(list)}};
}

std::string RedactedLog(const std::string& path, const Redactor& redactor) {
  ParsedTrace parsed = ParseTrace(EndOfFile(path, kLongestLog).value_or(""));
  std::string text;
  for (TraceRecord& record : parsed.records) text += TraceLine(redactor.Record(std::move(record))) + "\r\n";
  if (parsed.otherLines > 0) text += "(" + std::to_string(parsed.otherLines) + " lines in no known form left out)\r\n";
  return text;
}

std::string RedactedSettings(const std::string& path, const Redactor& redactor) {
  const auto text = EndOfFile(path, kLongestSettings + 1);
  if (!text) return "(missing, or cannot be read)\r\n";
  if (text->size() > kLongestSettings || text->find('\0') != text->npos) return "(left out: too long, or no text)\r\n";
  return redactor.Ini(*text);
}

// A text of a sibling, each line on its own.
std::string RedactedText(const std::string& path, const Redactor& redactor) {
  std::string text = EndOfFile(path, kLongestSettings).value_or("(missing, or cannot be read)"), shown;
  if (text.find('\0') != text.npos) return "(left out: not a text)\r\n";
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string line = text.substr(0, end);
    text.erase(0, end + 1);
    if (line.ends_with('\r')) line.pop_back();
    shown += redactor.Text(line) + "\r\n";
  }
  return shown;
}

// The names of the logs in a folder.
std::vector<std::string> LogsIn(const std::string& folder) {
  std::vector<std::string> names;
  WIN32_FIND_DATAA found;
  const win::FindHandle search(FindFirstFileA((folder + "*.log").c_str(), &found));
  if (!search) return names;
  do {
    names.emplace_back(found.cFileName);
  } while (FindNextFileA(search.Get(), &found));
  return names;
}

nlohmann::ordered_json RegistryValues() {
  nlohmann::ordered_json document = {{"installPath", Utf8FromCodePage(kelcrt::CProductInfo().GetInstallPath())},
                                     {"protections", nlohmann::ordered_json::object()}};
  const auto names =
      win::ValueNames(HKEY_LOCAL_MACHINE, registration::kProtectionsKey, registration::kLongestProtection);
  for (const std::string& name : names.value_or(std::vector<std::string>{})) {
    const auto folder = win::ReadTextValue(HKEY_LOCAL_MACHINE, registration::kProtectionsKey, name.c_str(),
                                           registration::kLongestProtectionDirectory);
    document["protections"][Utf8FromCodePage(name)] = Utf8FromCodePage(folder.value_or(""));
  }
  return document;
}

/// An archive that keeps the list of its names.
class BundleMaker {
 public:
  void Add(const std::string& name, const std::string& content) {
    archive_.Add(name, content);
    bundle_.names.push_back(name);
  }

  Bundle Finish() {
    bundle_.bytes = archive_.Bytes();
    return std::move(bundle_);
  }

 private:
  ZipArchive archive_{LocalFatTime()};
  Bundle bundle_;
};

}  // namespace

Bundle MakeBundle(const Product& product) {
  const StoreCopies copies = ReadStoreCopies(product);
  const Redactor redactor = MakeRedactor(product, copies);
  BundleMaker maker;
  maker.Add("status.json", DumpJson(Answer(JsonOf(GatherStatus(product, copies, redactor, kErrors)))));
  maker.Add("doctor.json", DumpJson(Answer(JsonOf(Examine(product, copies)))));
  maker.Add("files.json", DumpJson(Answer(ListFiles(product))));
  maker.Add("log/KELUtils.log", RedactedLog(product.TraceLog(), redactor));
  maker.Add("log/KELUtils.log.old", RedactedLog(product.TraceLog() + ".old", redactor));
  for (const ProductFile& file : product.SettingsFiles()) {
    const std::string folder = file.folder.empty() ? "KELUtils" : file.folder;
    maker.Add("settings/" + folder + "/" + file.file, RedactedSettings(product.Path(file), redactor));
  }
  maker.Add("registry.json", DumpJson(Answer(RegistryValues())));
  for (const ProductFile& file :
       {ProductFile{"Scheduler", "Config\\jobs.json"}, ProductFile{"Scheduler", "Config\\tokens.tok"},
        ProductFile{"KESLPMNG", "Config\\plugins.tok"}, ProductFile{"KELTVEVT", "events.jsonl"}}) {
    const std::string name = file.file.substr(file.file.rfind('\\') + 1);
    maker.Add("agent/" + file.folder + "/" + name, RedactedText(product.Path(file), redactor));
  }
  for (const std::string& folder : FoldersOf(product)) {
    for (const std::string& name : LogsIn(product.Folder(folder))) {
      const ProductFile file{folder, name};
      if (!text::SameName(product.Path(file), product.TraceLog())) {
        maker.Add("log/" + folder + "/" + Utf8FromCodePage(name), RedactedText(product.Path(file), redactor));
      }
    }
  }
  return maker.Finish();
}

}  // namespace kelctl
