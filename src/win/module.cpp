#include "win/module.h"

#include <windows.h>

#include <iterator>
#include <string>
#include <string_view>

#include "win/code_page.h"
#include "win/registry.h"

namespace win {

namespace {

HMODULE g_module = nullptr;

// Null until the directory is known. Owned here, but by a plain pointer: it is given up at detach, never by a
// destructor that would also run while a process is being torn down.
std::string* g_directory = nullptr;

}  // namespace

constinit ManualCriticalSection IntegraLock{};

void AttachModule(HMODULE module) {
  g_module = module;
  std::string directory = GetModuleDirectory();
  if (!directory.empty()) g_directory = new std::string(std::move(directory));
}

void DetachModule() noexcept {
  delete g_directory;
  g_directory = nullptr;
}

std::string GetModuleDirectory() {
  wchar_t name[4096];
  const DWORD length = GetModuleFileNameW(g_module, name, std::size(name));
  // A name that fills the buffer was cut, and its folder would be another one.
  if (length == std::size(name)) return {};
  const std::wstring_view path(name, length);
  const auto end = path.rfind(L'\\');
  if (end == std::wstring_view::npos) return {};
  return ToCodePage(path.substr(0, end)).value_or("");
}

std::string_view KeptModuleDirectory() noexcept { return g_directory ? *g_directory : std::string_view(); }

}  // namespace win

namespace kelcrt {
namespace {

constexpr std::string_view kDefaultProductName = "Tavrin Security Agent";
constexpr char kSetupKey[] = "SOFTWARE\\Tavrin Security\\SetupEx\\Orvane";
constexpr char kClientSystemKey[] = "SOFTWARE\\Tavrin Security\\Orvane\\ClientSystem";

}  // namespace

CProductInfo::CProductInfo(const char* testingPathVariable) {
  if (*testingPathVariable != '\0' &&
      GetEnvironmentVariableA(testingPathVariable, testingInstallPath_.get(), kSize) >= kSize) {
    testingInstallPath_[0] = '\0';
  }
  const auto name = win::ReadTextValue(HKEY_LOCAL_MACHINE, kSetupKey, "ProductName", kSize - 1);
  (name && !name->empty() ? std::string_view(*name) : kDefaultProductName).copy(productName_.get(), kSize - 1);
  if (const auto path = win::ReadTextValue(HKEY_LOCAL_MACHINE, kClientSystemKey, "InstallPath", kSize - 1)) {
    path->copy(installPath_.get(), kSize - 1);
  }
}

const char* CProductInfo::GetInstallPath() const noexcept {
  return testingInstallPath_[0] != '\0' ? testingInstallPath_.get() : installPath_.get();
}

}  // namespace kelcrt
