#include "win/registry.h"

#include <cstring>

#include "win/owner.h"

namespace win {
namespace {

RegistryKey OpenForReading(HKEY root, const char* path) noexcept {
  HKEY opened = nullptr;
  return RegistryKey(RegOpenKeyExA(root, path, 0, KEY_READ, &opened) == ERROR_SUCCESS ? opened : nullptr);
}

}  // namespace

std::optional<std::string> ReadTextValue(HKEY root, const char* path, const char* name, std::size_t limit) {
  const RegistryKey key = OpenForReading(root, path);
  if (!key) return std::nullopt;

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

std::optional<std::vector<std::string>> ValueNames(HKEY root, const char* path, std::size_t limit) {
  const RegistryKey key = OpenForReading(root, path);
  if (!key) return std::nullopt;
  std::vector<std::string> names;
  std::string name(limit + 1, '\0');
  for (DWORD index = 0;; ++index) {
    DWORD length = static_cast<DWORD>(name.size());
    if (RegEnumValueA(key.Get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
      break;
    names.emplace_back(name.data(), length);
  }
  return names;
}

bool CanOpenKey(HKEY root, const char* path) noexcept {
  HKEY opened = nullptr;
  return static_cast<bool>(
      RegistryKey(RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, &opened) == ERROR_SUCCESS ? opened : nullptr));
}

}  // namespace win
