#include "windows_library.h"

#include <windows.h>

#include "code_page.h"
#include "errors.h"

namespace kelctl {
namespace {

constexpr wchar_t kLibraryName[] = L"KELUtils.dll";

// The longest path of Windows, in characters with the terminating zero.
constexpr DWORD kLongestPath = 32768;

std::wstring BesideThisProgram() {
  std::wstring path(kLongestPath, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), kLongestPath));
  return path.substr(0, path.rfind(L'\\') + 1) + kLibraryName;
}

// A full path, so that the platform does not search its own folders for a bare name.
std::wstring FullPath(const std::wstring& path) {
  std::wstring full(kLongestPath, L'\0');
  full.resize(GetFullPathNameW(path.c_str(), kLongestPath, full.data(), nullptr));
  return full;
}

class WindowsLibrary : public Library {
 public:
  explicit WindowsLibrary(const std::wstring& path)
      : path_(Utf8FromWide(path)), module_(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {
    if (!module_)
      throw LibraryError("cannot load " + path_ + " (Windows error " + std::to_string(GetLastError()) + ")");
  }
  ~WindowsLibrary() override { FreeLibrary(module_); }
  WindowsLibrary(const WindowsLibrary&) = delete;
  WindowsLibrary& operator=(const WindowsLibrary&) = delete;

  AnyFunction Find(const char* exportName) override {
    const FARPROC function = GetProcAddress(module_, exportName);
    if (!function) throw LibraryError(path_ + " has no export " + exportName);
    return reinterpret_cast<AnyFunction>(function);
  }
  std::string ToCodePage(const std::string& text) override { return CodePageFromUtf8(text); }
  std::string FromCodePage(const std::string& text) override { return Utf8FromCodePage(text); }

 private:
  std::string path_;
  HMODULE module_;
};

}  // namespace

std::unique_ptr<Library> OpenWindowsLibrary(const std::string& path) {
  return std::make_unique<WindowsLibrary>(path.empty() ? BesideThisProgram() : FullPath(WideFromUtf8(path)));
}

}  // namespace kelctl
