// Reads and writes values of the store through the exports of the library.
#pragma once

#include <cstdint>
#include <string>

#include "library.h"
#include "store_values.h"

namespace kelctl {

/// What a getter answered. `text` and `number` count only when `result` is KE_SUCCESS, each for getters of its type.
struct Reading {
  KE_RESULT result = KE_SUCCESS;
  std::string text = {};  // UTF-8
  std::int32_t number = 0;
};

/// Reads one value. Throws LibraryError.
Reading ReadValue(Library& library, const StoreValue& value);

/// Writes one value, which must not be read only: `text` as it is, or the number that it holds. `onlyForward` belongs
/// to the setter of the installation state. Throws UsageError, LibraryError, CallError.
void WriteValue(Library& library, const StoreValue& value, const std::string& text, bool onlyForward);

/// Writes a free property. Throws UsageError, LibraryError, CallError.
void WriteProperty(Library& library, const std::string& key, const std::string& text);

}  // namespace kelctl
