// The path rule of the product: every folder is the module directory followed by a literal tail. Nothing is
// canonicalised, so the ".." reaches Windows as written.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace text {

/// True for the first byte of a character of two bytes.
using LeadByteTest = bool (*)(char byte) noexcept;

/// Where the last backslash of `text` is; npos when it has none. The second byte of a character may have the
/// backslash's value, and is none.
std::size_t LastBackslash(std::string_view text, LeadByteTest isLeadByte) noexcept;

/// True when the last character of `text` is a backslash.
bool EndsInBackslash(std::string_view text, LeadByteTest isLeadByte) noexcept;

/// `folder` + "\" + `file`.
std::string FileIn(std::string_view folder, std::string_view file);

/// True for a path that does not depend on the current directory or drive: it begins with a drive ("C:\") or a share
/// ("\\\\"); "/" counts as "\".
bool IsFullPath(std::string_view path);

/// The module directory with a trailing backslash.
std::string OwnFolder(std::string_view moduleDirectory);

/// The file of the library's own settings, in the module directory.
inline constexpr char kSettingsFile[] = "KELUTILS.INI";

/// The folder of the shared components without a trailing backslash: `moduleDirectory` + "\..\Common".
std::string CommonDirectory(std::string_view moduleDirectory);

/// The folder of the shared components, with a trailing backslash: `moduleDirectory` + "\..\Common\".
std::string CommonFolder(std::string_view moduleDirectory);

/// A sibling program's folder, with a trailing backslash: `moduleDirectory` + "\..\" + `folder` + "\".
std::string SiblingFolder(std::string_view moduleDirectory, std::string_view folder);

}  // namespace text
