#include "library.h"

#include "arguments.h"
#include "code_page.h"
#include "errors.h"

namespace kelctl {
namespace {

constexpr wchar_t kLibraryName[] = L"KELUtils.dll";

std::wstring BesideThisProgram() {
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), kLongestPath));
  return path.substr(0, path.rfind(L'\\') + 1) + kLibraryName;
}

}  // namespace

// A full path, so that the platform does not search its own folders for a bare name.
std::string LibraryPath(const std::string& option) {
  return option.empty() ? Utf8FromWide(BesideThisProgram()) : FullPath(option);
}

Library::Library(const std::string& path) : path_(LibraryPath(path)) {
  module_.Reset(LoadLibraryExW(WideFromUtf8(path_).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module_) throw LibraryError("cannot load " + path_ + " (Windows error " + std::to_string(GetLastError()) + ")");
}

AnyFunction Library::Find(const char* exportName) const {
  const FARPROC function = GetProcAddress(module_.Get(), exportName);
  if (!function) throw LibraryError(path_ + " has no export " + exportName);
  return reinterpret_cast<AnyFunction>(function);
}

std::string Library::ToCodePage(const std::string& text) const { return CodePageFromUtf8(text); }

std::string Library::FromCodePage(const std::string& text) const { return Utf8FromCodePage(text); }

}  // namespace kelctl
