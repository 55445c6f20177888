#include "win/module.h"

#include <windows.h>

#include <cstring>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

#include "text/paths.h"
#include "win/gate.h"
#include "win/registry.h"

namespace win {

namespace {

HMODULE g_module = nullptr;

// Null until the directory is known. Owned here, but by a plain pointer: it is given up at detach, never by a
// destructor that would also run while a process is being torn down.
std::string* g_directory = nullptr;

// The 8-bit form of a path. None when it would name another path: when the code page lacks a character, and for
// characters other than ASCII in a process whose file functions are set to the OEM code page.
std::optional<std::string> ToCodePage(std::wstring_view path) {
  const int length = static_cast<int>(path.size());
  std::string narrow(WideCharToMultiByte(CP_ACP, 0, path.data(), length, nullptr, 0, nullptr, nullptr), '\0');
  const int size = static_cast<int>(narrow.size());
  WideCharToMultiByte(CP_ACP, 0, path.data(), length, narrow.data(), size, nullptr, nullptr);
  // A missing character becomes a similar one or "?". Only the way back shows that in every code page.
  const UINT fileCodePage = AreFileApisANSI() ? CP_ACP : CP_OEMCP;
  std::wstring back(narrow.size(), L'\0');
  back.resize(MultiByteToWideChar(fileCodePage, 0, narrow.data(), size, back.data(), size));
  if (back != path) return std::nullopt;
  return narrow;
}

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
  if (!Passes(Call::kName)) return {};
  const DWORD length = GetModuleFileNameW(g_module, name, std::size(name));
  // A name that fills the buffer was cut, and its folder would be another one.
  if (length == std::size(name)) return {};
  const std::wstring_view path(name, length);
  const auto end = path.rfind(L'\\');
  if (end == std::wstring_view::npos) return {};
  return ToCodePage(path.substr(0, end)).value_or("");
}

std::optional<std::string> FolderOf(std::string_view component) {
  if (g_directory == nullptr) return std::nullopt;
  return component.empty() ? text::OwnFolder(*g_directory) : text::SiblingFolder(*g_directory, component);
}

std::string ComponentFile(std::string_view component, std::string_view file) {
  auto folder = FolderOf(component);
  return folder ? folder->append(file) : std::string();
}

std::string_view KeptModuleDirectory() noexcept { return g_directory ? *g_directory : std::string_view(); }

ModuleHandle LoadModule(const char* path, DWORD flags) noexcept {
  return ModuleHandle(Passes(Call::kModule) ? LoadLibraryExA(path, nullptr, flags) : nullptr);
}

FARPROC FunctionOf(HMODULE module, const char* name) noexcept {
  return Passes(Call::kFunction) ? GetProcAddress(module, name) : nullptr;
}

bool BindNames(HMODULE module, void* table, std::span<const BoundName> names) noexcept {
  for (const BoundName& row : names) {
    const FARPROC function = FunctionOf(module, row.name);
    if (function == nullptr && row.presence == kRequired) return false;
    std::memcpy(static_cast<char*>(table) + row.offset, &function, sizeof function);
  }
  return true;
}

}  // namespace win

namespace kelcrt {
namespace {

constexpr char kDefaultProductName[] = "Tavrin Security Agent";
constexpr char kSetupKey[] = "SOFTWARE\\Tavrin Security\\SetupEx\\Orvane";
constexpr char kClientSystemKey[] = "SOFTWARE\\Tavrin Security\\Orvane\\ClientSystem";

}  // namespace

CProductInfo::CProductInfo(const char* testingPathVariable) {
  constexpr std::size_t kLongest = 259;  // characters of each text
  auto name = win::ReadTextValue(HKEY_LOCAL_MACHINE, kSetupKey, "ProductName", kLongest);
  productName_ = name && !name->empty() ? *std::move(name) : kDefaultProductName;
  installPath_ = win::ReadTextValue(HKEY_LOCAL_MACHINE, kClientSystemKey, "InstallPath", kLongest).value_or("");
  if (*testingPathVariable == '\0') return;
  char path[kLongest + 1];
  if (!win::Passes(win::Call::kName)) return;
  const DWORD length = GetEnvironmentVariableA(testingPathVariable, path, sizeof path);
  if (length > 0 && length < sizeof path) installPath_.assign(path, length);
}

}  // namespace kelcrt
