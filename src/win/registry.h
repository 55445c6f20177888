// Reading and writing the registry. Each call passes the gate.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "win/owner.h"

namespace win {

/// The text value `name` of the key `path` below `root`, of either text type; environment variables in the expandable
/// one are replaced. None when the key or the value is missing or of another type, and when the resulting text has more
/// than `limit` characters.
std::optional<std::string> ReadTextValue(HKEY root, const char* path, const char* name, std::size_t limit);

/// The names of the key's values, in their order, up to the first one of more than `limit` characters; none when the
/// key cannot be opened. The unnamed default value is the empty name.
std::optional<std::vector<std::string>> ValueNames(HKEY root, const char* path, std::size_t limit);

/// True when the key can be opened to query its values.
bool CanOpenKey(HKEY root, const char* path) noexcept;

/// Opens the key `path` below `parent`, or creates it where it is missing; `key` holds it after a success. Returns
/// the result of Windows.
LSTATUS OpenKey(HKEY parent, const std::wstring& path, REGSAM access, RegistryKey& key) noexcept;
LSTATUS CreateKey(HKEY parent, const std::wstring& path, REGSAM access, RegistryKey& key) noexcept;

/// Deletes a key that has no subkeys; one that is missing is a success.
LSTATUS DeleteKey(HKEY parent, const std::wstring& name) noexcept;

LSTATUS DeleteValue(HKEY key, const wchar_t* name) noexcept;

/// Copies the key `from` below `parent`, with all below it, into the key `to`.
LSTATUS CopyTree(HKEY parent, const std::wstring& from, HKEY to) noexcept;

/// Stores the names of the key's direct subkeys, in the order of Windows.
LSTATUS SubkeyNames(HKEY key, std::vector<std::wstring>& names);

/// True when the key has a value of that name, of any type.
bool HasValue(HKEY key, const wchar_t* name) noexcept;

/// The text value `name` of any length and either text type, as it is stored; none when it is missing or no text.
std::optional<std::wstring> ReadText(HKEY key, const wchar_t* name);
std::optional<DWORD> ReadNumber(HKEY key, const wchar_t* name) noexcept;

/// `size` is in bytes.
LSTATUS WriteValue(HKEY key, const wchar_t* name, DWORD type, const void* data, std::size_t size) noexcept;
LSTATUS WriteText(HKEY key, const wchar_t* name, const std::wstring& text) noexcept;
LSTATUS WriteNumber(HKEY key, const wchar_t* name, DWORD number) noexcept;

}  // namespace win
