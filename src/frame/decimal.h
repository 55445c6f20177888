// Decimal numbers in texts of settings and stores.
#pragma once

#include <cstdint>

namespace frame {

/// The base-10 integer that `text` begins with: white space and one sign may stand before the digits, the first other
/// character ends them. 0 when there are no digits; a number out of range becomes the nearest 32-bit one. `text` is not
/// null.
std::int32_t DecimalFromText(const char* text) noexcept;

}  // namespace frame
