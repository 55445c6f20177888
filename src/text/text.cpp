#include "text/text.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace text {

namespace {

char LowerAscii(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool SameName(std::string_view left, std::string_view right) noexcept {
  return std::ranges::equal(left, right, {}, LowerAscii, LowerAscii);
}

std::int32_t DecimalFromText(const char* text) noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  const long long number = std::strtoll(text, nullptr, 10);
  return static_cast<std::int32_t>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

}  // namespace text
