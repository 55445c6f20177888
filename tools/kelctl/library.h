// KELUtils.dll as the commands see it.
#pragma once

#include <string>

#include "win/owner.h"

namespace kelctl {

/// A function of unknown type, to be cast to the type of its prototype in KELUtils.h.
using AnyFunction = void (*)();

/// The full path (UTF-8) of the library that the option --dll names: KELUtils.dll beside this program for an empty one.
std::string LibraryPath(const std::string& option);

/// A loaded KELUtils library. Texts of kelctl are UTF-8, texts of the exports are in the system's code page.
class Library {
 public:
  /// Loads the DLL at `path` (UTF-8, relative to the current directory), or KELUtils.dll beside this program when
  /// `path` is empty. Throws LibraryError.
  explicit Library(const std::string& path);

  /// The folder of the DLL (UTF-8), without a trailing backslash.
  std::string Folder() const { return path_.substr(0, path_.rfind('\\')); }

  /// The export of that name, never null. Throws LibraryError when the library lacks it.
  AnyFunction Find(const char* exportName) const;

  /// Throws UsageError when a character of `text` does not exist in the code page.
  std::string ToCodePage(const std::string& text) const;

  /// Bytes that are no character become replacement characters.
  std::string FromCodePage(const std::string& text) const;

 private:
  std::string path_;
  win::ModuleHandle module_;
};

}  // namespace kelctl
