#include "settings/numbers.h"

#include <algorithm>
#include <charconv>

namespace settings {
namespace {

std::string_view WithoutBlanks(std::string_view text) noexcept {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace

std::optional<std::int32_t> ParseNumber(std::string_view text) noexcept {
  text = WithoutBlanks(text);
  const char* const end = text.data() + text.size();
  std::int32_t number = 0;
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stopped != end) return std::nullopt;
  return number;
}

std::optional<Numbers> ParseNumbers(std::string_view text) noexcept {
  Numbers numbers;
  for (;;) {
    const std::size_t comma = std::min(text.find(','), text.size());
    const auto number = ParseNumber(text.substr(0, comma));
    if (!number || numbers.count == numbers.values.size()) return std::nullopt;
    numbers.values[numbers.count++] = *number;
    if (comma == text.size()) return numbers;
    text.remove_prefix(comma + 1);
  }
}

}  // namespace settings
