#include "frame/module.h"

#include <iterator>

#include "win/code_page.h"

namespace frame {
namespace {

HMODULE g_module = nullptr;

// Null until the directory is known. Owned here, but by a plain pointer: it is given up at detach, never by a
// destructor that would also run while a process is being torn down.
std::string* g_directory = nullptr;

}  // namespace

constinit win::ManualCriticalSection IntegraLock{};

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
  return win::ToCodePage(path.substr(0, end)).value_or("");
}

std::string_view KeptModuleDirectory() noexcept { return g_directory ? *g_directory : std::string_view(); }

}  // namespace frame
