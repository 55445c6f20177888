// The product tree around a library: where its files lie. All found from the library's own folder, as the library does.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kelctl {

/// A file of the tree that lies in a folder beside the library's own, or in the library's own for an empty `folder`.
struct ProductFile {
  std::string folder;
  std::string file;
};

/// Paths are in the system's code page, and full ones.
class Product {
 public:
  /// The tree of a library, given by its path in UTF-8; the library itself may be missing. Throws LibraryError when its
  /// folder is, or when the code page cannot represent its path.
  explicit Product(const std::string& libraryPath);

  /// The library's own folder, without a trailing backslash.
  const std::string& Directory() const { return directory_; }
  const std::string& LibraryFile() const { return library_; }

  std::string Folder(const std::string& folder) const;  // with a trailing backslash
  std::string Path(const ProductFile& file) const { return Folder(file.folder) + file.file; }

  /// The trace log; a trace library may keep an older part of it beside it, with ".old" behind the name.
  std::string TraceLog() const { return Path({"", "KELUtils.log"}); }

  /// The plain settings files: that of the library, and those of other modules that the library edits. Each once.
  std::vector<ProductFile> SettingsFiles() const;

 private:
  std::string directory_;
  std::string library_;
};

/// "a.b.c.d" from the version resource of a module or program; none when it has none.
std::optional<std::string> FileVersion(const std::string& path);

}  // namespace kelctl
