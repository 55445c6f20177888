#include "win/function_table.h"

#include <cstring>

namespace win {

bool BindNames(HMODULE module, void* table, std::span<const BoundName> names) noexcept {
  for (const BoundName& row : names) {
    const FARPROC function = GetProcAddress(module, row.name);
    if (function == nullptr && row.presence == kRequired) return false;
    std::memcpy(static_cast<char*>(table) + row.offset, &function, sizeof function);
  }
  return true;
}

}  // namespace win
