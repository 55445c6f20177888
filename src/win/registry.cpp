#include "win/registry.h"

#include <cstring>

#include "win/owner.h"

namespace win {

std::optional<std::string> ReadTextValue(HKEY root, const char* path, const char* name, std::size_t limit) {
  HKEY opened = nullptr;
  if (RegOpenKeyExA(root, path, 0, KEY_READ, &opened) != ERROR_SUCCESS) return std::nullopt;
  const RegistryKey key(opened);

  std::string text(limit + 1, '\0');
  DWORD type = 0;
  DWORD size = static_cast<DWORD>(text.size());
  const LSTATUS status = RegQueryValueExA(key.Get(), name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size);
  if (status != ERROR_SUCCESS || type != REG_SZ || size > text.size()) return std::nullopt;
  // The stored data may lack its terminating zero, or hold several.
  text.resize(strnlen(text.data(), size));
  if (text.size() > limit) return std::nullopt;
  return text;
}

}  // namespace win
