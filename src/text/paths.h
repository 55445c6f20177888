// The path rule of the product: every folder is the module directory followed by a literal tail. Paths are not
// canonicalised: Windows gets the ".." as written.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace text {

/// True for the first byte of a character of two bytes.
using LeadByteTest = bool (*)(char byte) noexcept;

/// The position of the last backslash of `text`; npos without one. The second byte of a character never counts as a
/// backslash.
std::size_t LastBackslash(std::string_view text, LeadByteTest isLeadByte) noexcept;

/// True when the last character of `text` is a backslash.
bool EndsInBackslash(std::string_view text, LeadByteTest isLeadByte) noexcept;

/// `folder` + "\" + `file`.
std::string FileIn(std::string_view folder, std::string_view file);

/// True for a path that does not depend on the current directory or drive: it begins with a drive ("C:\") or a share
/// ("\\\\"); "/" counts as "\".
bool IsFullPath(std::string_view path);

/// The module directory with a trailing backslash.
inline std::string OwnFolder(std::string_view moduleDirectory) { return FileIn(moduleDirectory, {}); }

/// The file of the library's own settings, in the module directory.
inline constexpr char kSettingsFile[] = "KELUTILS.INI";

/// The folder of a sibling, with a trailing backslash: `moduleDirectory` + "\..\" + `folder` + "\".
std::string SiblingFolder(std::string_view moduleDirectory, std::string_view folder);

}  // namespace text
