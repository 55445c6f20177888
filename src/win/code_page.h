// Characters of the system's code page, in which Windows takes 8-bit paths.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace win {

/// True for the first byte of a character of two bytes.
inline bool IsLeadByte(char byte) noexcept { return IsDBCSLeadByte(static_cast<BYTE>(byte)) != 0; }

/// The 8-bit form of a path. None when it would stand for another path: when the code page lacks a character, and for
/// characters other than ASCII in a process whose file functions are set to the OEM code page.
std::optional<std::string> ToCodePage(std::wstring_view path);

}  // namespace win
