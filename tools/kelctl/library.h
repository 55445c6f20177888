// KELUtils.dll as the commands see it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "KELUtils.h"
#include "errors.h"
#include "win/owner.h"

namespace kelctl {

/// A function of unknown type, to be cast to the type of its prototype in KELUtils.h.
using AnyFunction = void (*)();

/// The full path (UTF-8) of the library that the option --dll names: KELUtils.dll in this program's folder for an
/// empty one.
std::string LibraryPath(const std::string& option);

/// A loaded KELUtils library. Texts of kelctl are UTF-8, texts of the exports are in the system's code page.
class Library {
 public:
  /// Loads the DLL at `path` (UTF-8, relative to the current directory), or KELUtils.dll in this program's folder when
  /// `path` is empty. Throws LibraryError.
  explicit Library(const std::string& path);

  /// The folder of the DLL (UTF-8), without a trailing backslash.
  std::string Folder() const { return path_.substr(0, path_.rfind('\\')); }

  /// The export of that name, never null. Throws LibraryError when the library lacks it.
  AnyFunction Find(const char* exportName) const;

  /// The same with the type of its prototype.
  template <typename Function>
  Function* Typed(const char* exportName) const {
    return reinterpret_cast<Function*>(Find(exportName));
  }

 private:
  std::string path_;
  win::ModuleHandle module_;
};

/// Throws CallError when an export returned anything but success.
inline void ThrowUnlessSuccess(const char* exportName, KE_RESULT result) {
  if (result != KE_SUCCESS) throw CallError(exportName, result);
}

/// Calls a text getter, again with twice the size while its buffer is too small, up to the largest buffer. `get` takes
/// the buffer and its size; `text` receives the value, in the code page, after a success.
template <typename Get>
KE_RESULT ReadText(Get get, std::string& text) {
  constexpr std::int32_t kFirstBufferSize = 64 * 1024;      // bytes; the longest value that an INI file gives
  constexpr std::int32_t kLargestBufferSize = 1024 * 1024;  // bytes
  KE_RESULT result = KE_BUFFER_TOO_SMALL;
  for (auto size = kFirstBufferSize; result == KE_BUFFER_TOO_SMALL && size <= kLargestBufferSize; size *= 2) {
    text.assign(static_cast<std::size_t>(size), '\0');
    result = get(text.data(), size);
  }
  text.resize(std::min(text.find('\0'), text.size()));
  return result;
}

/// The setting text, on one line, of a plain text. Throws UsageError for a text that is too long for a setting,
/// LibraryError, CallError.
std::string EncryptSetting(const Library& library, const std::string& plain);

/// The plain text of a setting text. Throws LibraryError, CallError.
std::string DecryptSetting(const Library& library, const std::string& setting);

}  // namespace kelctl
