#include "win/registry.h"

#include <algorithm>
#include <iterator>

#include "win/gate.h"
#include "win/owner.h"

namespace win {

namespace {

constexpr std::size_t kLongestExpandable = 32766;  // characters: Windows counts the bytes of a wide text in 16 bits

// The result of a call of the registry, or the error of the gate.
template <typename... Parameters, typename... Arguments>
LSTATUS Passing(LSTATUS(WINAPI* function)(Parameters...), Arguments... arguments) noexcept {
  return Passes(Call::kRegistry) ? function(arguments...) : static_cast<LSTATUS>(GetLastError());
}

RegistryKey OpenForReading(HKEY root, const char* path, REGSAM access = KEY_READ) noexcept {
  HKEY opened = nullptr;
  return RegistryKey(Passing(RegOpenKeyExA, root, path, 0, access, &opened) == ERROR_SUCCESS ? opened : nullptr);
}

// The text of a value of either text type, up to its first zero: the stored data may lack it, or hold several.
template <typename Char, typename Query>
std::optional<std::basic_string<Char>> ReadTextWith(Query query, HKEY key, const Char* name, DWORD& type) {
  std::basic_string<Char> text;
  DWORD size = 0;
  LSTATUS status = ERROR_MORE_DATA;
  while (status == ERROR_MORE_DATA) {  // also when the value has grown since it was asked for its size
    text.resize(size / sizeof(Char) + 1);
    size = static_cast<DWORD>(text.size() * sizeof(Char));
    status = Passing(query, key, name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size);
  }
  if (status != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ)) return std::nullopt;
  text.resize(std::min<std::size_t>(text.find(Char{}), size / sizeof(Char)));
  return text;
}

// A text with its environment variables replaced; none when it is too long for Windows.
std::optional<std::string> Expanded(const std::string& text) {
  if (text.size() > kLongestExpandable) return std::nullopt;
  std::string expanded;
  for (DWORD needed = 1; needed > expanded.size();) {
    expanded.resize(needed);
    if (!Passes(Call::kName)) return std::nullopt;
    needed = ExpandEnvironmentStringsA(text.c_str(), expanded.data(), needed);
    if (needed == 0) return std::nullopt;
  }
  return expanded.c_str();
}

}  // namespace

std::optional<std::string> ReadTextValue(HKEY root, const char* path, const char* name, std::size_t limit) {
  const RegistryKey key = OpenForReading(root, path);
  if (!key) return std::nullopt;
  DWORD type = 0;
  auto text = ReadTextWith(RegQueryValueExA, key.Get(), name, type);
  if (text && type == REG_EXPAND_SZ) text = Expanded(*text);
  if (!text || text->size() > limit) return std::nullopt;
  return text;
}

std::optional<std::vector<std::string>> ValueNames(HKEY root, const char* path, std::size_t limit) {
  const RegistryKey key = OpenForReading(root, path);
  if (!key) return std::nullopt;
  std::vector<std::string> names;
  std::string name(limit + 1, '\0');
  for (DWORD index = 0;; ++index) {
    auto length = static_cast<DWORD>(name.size());
    if (Passing(RegEnumValueA, key.Get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS)
      break;
    names.emplace_back(name.data(), length);
  }
  return names;
}

bool CanOpenKey(HKEY root, const char* path) noexcept {
  return static_cast<bool>(OpenForReading(root, path, KEY_QUERY_VALUE));
}

LSTATUS OpenKey(HKEY parent, const std::wstring& path, REGSAM access, RegistryKey& key) noexcept {
  HKEY opened = nullptr;
  const LSTATUS status = Passing(RegOpenKeyExW, parent, path.c_str(), 0, access, &opened);
  if (status == ERROR_SUCCESS) key.Reset(opened);
  return status;
}

LSTATUS CreateKey(HKEY parent, const std::wstring& path, REGSAM access, RegistryKey& key) noexcept {
  HKEY opened = nullptr;
  const LSTATUS status = Passing(RegCreateKeyExW, parent, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                 nullptr, &opened, nullptr);
  if (status == ERROR_SUCCESS) key.Reset(opened);
  return status;
}

LSTATUS DeleteKey(HKEY parent, const std::wstring& name) noexcept {
  const LSTATUS status = Passing(RegDeleteKeyW, parent, name.c_str());
  return status == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : status;
}

LSTATUS DeleteValue(HKEY key, const wchar_t* name) noexcept { return Passing(RegDeleteValueW, key, name); }

LSTATUS CopyTree(HKEY parent, const std::wstring& from, HKEY to) noexcept {
  return Passing(RegCopyTreeW, parent, from.c_str(), to);
}

LSTATUS SubkeyNames(HKEY key, std::vector<std::wstring>& names) {
  wchar_t name[256];  // a key's name has at most 255 characters
  for (DWORD index = 0;; ++index) {
    DWORD length = std::size(name);
    const LSTATUS status = Passing(RegEnumKeyExW, key, index, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (status != ERROR_SUCCESS) return status == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : status;
    names.emplace_back(name, length);
  }
}

bool HasValue(HKEY key, const wchar_t* name) noexcept {
  return Passing(RegQueryValueExW, key, name, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

std::optional<std::wstring> ReadText(HKEY key, const wchar_t* name) {
  DWORD type = 0;
  return ReadTextWith(RegQueryValueExW, key, name, type);
}

std::optional<DWORD> ReadNumber(HKEY key, const wchar_t* name) noexcept {
  DWORD number = 0, type = 0, size = sizeof number;
  const LSTATUS status = Passing(RegQueryValueExW, key, name, nullptr, &type, reinterpret_cast<BYTE*>(&number), &size);
  if (status != ERROR_SUCCESS || type != REG_DWORD || size != sizeof number) return std::nullopt;
  return number;
}

LSTATUS WriteValue(HKEY key, const wchar_t* name, DWORD type, const void* data, std::size_t size) noexcept {
  return Passing(RegSetValueExW, key, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size));
}

LSTATUS WriteText(HKEY key, const wchar_t* name, const std::wstring& text) noexcept {
  return WriteValue(key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

LSTATUS WriteNumber(HKEY key, const wchar_t* name, DWORD number) noexcept {
  return WriteValue(key, name, REG_DWORD, &number, sizeof number);
}

}  // namespace win
