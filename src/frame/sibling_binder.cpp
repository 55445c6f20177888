#include "frame/sibling_binder.h"

#include <cstdio>
#include <cstring>

namespace frame {

HMODULE LoadSibling(const char* folder, const char* file) noexcept {
  char path[2048];
  const int length = folder ? snprintf(path, sizeof path, "%s%s", folder, file) : -1;
  if (length < 0 || length >= static_cast<int>(sizeof path)) {
    SetLastError(ERROR_BAD_PATHNAME);
    return nullptr;
  }
  return LoadLibraryExA(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}

bool BindNames(HMODULE module, void* table, std::span<const BoundName> names) noexcept {
  for (const BoundName& row : names) {
    const FARPROC function = GetProcAddress(module, row.name);
    if (function == nullptr && row.presence == kRequired) return false;
    std::memcpy(static_cast<char*>(table) + row.offset, &function, sizeof function);
  }
  return true;
}

}  // namespace frame
