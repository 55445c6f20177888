// KELUtils.dll as the commands see it.
#pragma once

#include <string>

namespace kelctl {

/// A function of unknown type, to be cast to the type of its prototype in KELUtils.h.
using AnyFunction = void (*)();

/// A loaded KELUtils library. Texts of kelctl are UTF-8, texts of the exports are in the system's code page.
class Library {
 public:
  virtual ~Library() = default;

  /// The export of that name, never null. Throws LibraryError when the library lacks it.
  virtual AnyFunction Find(const char* exportName) = 0;

  /// Throws UsageError when a character of `text` does not exist in the code page.
  virtual std::string ToCodePage(const std::string& text) = 0;

  /// Bytes that are no character become replacement characters.
  virtual std::string FromCodePage(const std::string& text) = 0;
};

}  // namespace kelctl
