#include "diagnosis/product.h"

#include <windows.h>

#include <algorithm>

#include "errors.h"
#include "siblings/plugins.h"
#include "text/paths.h"
#include "text/text.h"
#include "texts.h"
#include "upgrade/settings.h"
#include "win/file.h"
#include "win/module.h"

namespace kelctl {
namespace {

std::string FullPathOf(const std::string& path) {
  char full[MAX_PATH];
  const DWORD length = GetFullPathNameA(path.c_str(), sizeof full, full, nullptr);
  return length > 0 && length < sizeof full ? std::string(full, length) : path;
}

void AddOnce(std::vector<ProductFile>& files, const ProductFile& file) {
  const bool there = std::ranges::any_of(files, [&](const ProductFile& other) {
    return text::SameName(other.folder, file.folder) && text::SameName(other.file, file.file);
  });
  if (!there) files.push_back(file);
}

}  // namespace

Product::Product(const std::string& libraryPath) {
  std::string path;
  try {
    path = CodePageFromUtf8(libraryPath);
  } catch (const UsageError& error) {
    throw LibraryError(libraryPath + ": " + error.what() + ": the exports return 1781 there");
  }
  const auto separator = text::LastBackslash(path, win::IsLeadByte);
  directory_ = path.substr(0, separator);
  library_ = path.substr(separator + 1);
  if (!win::Exists(directory_)) throw LibraryError("there is no folder " + Utf8FromCodePage(directory_));
}

std::string Product::Folder(const std::string& folder) const {
  return folder.empty() ? text::OwnFolder(directory_) : FullPathOf(text::SiblingFolder(directory_, folder));
}

std::vector<ProductFile> Product::SettingsFiles() const {
  std::vector<ProductFile> files = {{"", text::kSettingsFile}, {"KESAgent", "KE_AGPRX.dat"}, {"KesLpmng", "UPDNW.DAT"}};
  for (const auto& place : {siblings::kRemoteControlPlugin, siblings::kInstallerPlugin}) {
    AddOnce(files, {place.folder, place.listFile});
  }
  for (const auto& rows : {upgrade::EventAndTokenSettings(), upgrade::AgentSettings(), upgrade::ModuleSettings()}) {
    for (const auto& row : rows) AddOnce(files, {row.directory, row.file});
  }
  return files;
}

std::optional<std::string> FileVersion(const std::string& path) {
  std::string resource(GetFileVersionInfoSizeA(path.c_str(), nullptr), '\0');
  if (resource.empty()) return std::nullopt;
  void* block = nullptr;
  UINT size = 0;
  if (!GetFileVersionInfoA(path.c_str(), 0, static_cast<DWORD>(resource.size()), resource.data()) ||
      !VerQueryValueA(resource.data(), "\\", &block, &size) || size < sizeof(VS_FIXEDFILEINFO)) {
    return std::nullopt;
  }
  const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(block);
  return std::to_string(HIWORD(fixed.dwFileVersionMS)) + "." + std::to_string(LOWORD(fixed.dwFileVersionMS)) + "." +
         std::to_string(HIWORD(fixed.dwFileVersionLS)) + "." + std::to_string(LOWORD(fixed.dwFileVersionLS));
}

}  // namespace kelctl
