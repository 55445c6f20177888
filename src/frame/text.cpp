#include "frame/text.h"

#include <algorithm>

namespace frame {
namespace {

char LowerAscii(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

bool SameName(std::string_view left, std::string_view right) noexcept {
  return std::ranges::equal(left, right, {}, LowerAscii, LowerAscii);
}

}  // namespace frame
