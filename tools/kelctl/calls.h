// Calling exports of the library with the types of their prototypes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

#include "errors.h"
#include "library.h"

namespace kelctl {

/// The export of that name, of the given type. Throws LibraryError when the library lacks it.
template <typename Function>
Function* Typed(Library& library, const char* exportName) {
  return reinterpret_cast<Function*>(library.Find(exportName));
}

/// The export `name`, with the type of its prototype in KELUtils.h.
#define KELCTL_EXPORT(library, name) (::kelctl::Typed<decltype(name)>(library, #name))

/// Throws CallError when an export returned anything but success.
inline void ThrowUnlessSuccess(const char* exportName, KE_RESULT result) {
  if (result != KE_SUCCESS) throw CallError(exportName, result);
}

/// Calls a text getter, again with twice the size while its buffer is too small, up to the largest buffer. `get` takes
/// the buffer and its size; `text` receives the value, in the code page, after a success.
template <typename Get>
KE_RESULT ReadText(Get get, std::string& text) {
  constexpr std::int32_t kFirstBufferSize = 4 * 1024;       // bytes
  constexpr std::int32_t kLargestBufferSize = 1024 * 1024;  // bytes
  KE_RESULT result = KE_BUFFER_TOO_SMALL;
  for (auto size = kFirstBufferSize; result == KE_BUFFER_TOO_SMALL && size <= kLargestBufferSize; size *= 2) {
    text.assign(static_cast<std::size_t>(size), '\0');
    result = get(text.data(), size);
  }
  text.resize(std::min(text.find('\0'), text.size()));
  return result;
}

}  // namespace kelctl
