#include "frame/decimal.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace frame {

std::int32_t DecimalFromText(const char* text) noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  const long long number = std::strtoll(text, nullptr, 10);
  return static_cast<std::int32_t>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

}  // namespace frame
