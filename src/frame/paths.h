// The path rule of the product: every folder is the module directory followed by a literal tail. Nothing is
// canonicalised, so the
// ".." reaches the platform as written.
#pragma once

#include <string>
#include <string_view>

namespace frame {

/// `path` up to its last backslash, without it; the empty text when there is none.
std::string FolderOf(std::string_view path);

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

}  // namespace frame
