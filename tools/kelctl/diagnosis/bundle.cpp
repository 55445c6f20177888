#include "diagnosis/bundle.h"

#include <windows.h>

#include <algorithm>

#include "diagnosis/examination.h"
#include "diagnosis/log_file.h"
#include "diagnosis/status.h"
#include "diagnosis/store_files.h"
#include "diagnosis/zip_archive.h"
#include "text/text.h"
#include "texts.h"
#include "win/owner.h"

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
                    {"attributes", found.dwFileAttributes}});
  } while (list.size() < kMostFiles && FindNextFileW(search.Get(), &found));
}

// The files in the folders of the library, the shared components, the siblings and the settings files, without their
// own subfolders.
nlohmann::ordered_json ListFiles(const Product& product) {
  std::vector<std::string> folders = {"", "Common", "KESAgent", "Scheduler", "KesLpmng", "KepWInst"};
  for (const ProductFile& file : product.SettingsFiles()) {
    const auto same = [&](const std::string& folder) { return text::SameName(folder, file.folder); };
    if (std::ranges::none_of(folders, same)) folders.push_back(file.folder);
  }
  auto list = nlohmann::ordered_json::array();
  for (const std::string& folder : folders) ListFolder(product.Folder(folder), list);
  return list;
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

/// An archive that notes its names.
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
  maker.Add("status.json", DumpJson(JsonOf(GatherStatus(product, copies, redactor, kErrors))));
  maker.Add("doctor.json", DumpJson(JsonOf(Examine(product, copies))));
  maker.Add("files.json", DumpJson(ListFiles(product)));
  maker.Add("log/KELUtils.log", RedactedLog(product.TraceLog(), redactor));
  maker.Add("log/KELUtils.log.old", RedactedLog(product.TraceLog() + ".old", redactor));
  for (const ProductFile& file : product.SettingsFiles()) {
    const std::string folder = file.folder.empty() ? "KELUtils" : file.folder;
    maker.Add("settings/" + folder + "/" + file.file, RedactedSettings(product.Path(file), redactor));
  }
  return maker.Finish();
}

}  // namespace kelctl
