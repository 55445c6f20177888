#include "shared/texts.h"

#include <algorithm>
#include <cstring>

#include "text/text.h"

namespace devkit {

std::optional<std::int64_t> ParseNumber(std::string_view text, std::int64_t lowest, std::int64_t highest) noexcept {
  if (lowest >= 0 && text.starts_with('-')) return std::nullopt;
  const auto number = text::NumberFromText<std::int64_t>(text);
  return number && *number >= lowest && *number <= highest ? number : std::nullopt;
}

std::vector<std::int32_t> ParseNumbers(std::string_view text) {
  constexpr std::size_t kMost = 64;
  std::vector<std::int32_t> numbers;
  for (;;) {
    const std::size_t comma = std::min(text.find(','), text.size());
    std::string_view part = text.substr(0, comma);
    part.remove_prefix(std::min(part.find_first_not_of(' '), part.size()));
    part = part.substr(0, part.find_last_not_of(' ') + 1);
    const auto number = ParseNumber(part, INT32_MIN, INT32_MAX);
    if (!number || numbers.size() == kMost) return {};
    numbers.push_back(static_cast<std::int32_t>(*number));
    if (comma == text.size()) return numbers;
    text.remove_prefix(comma + 1);
  }
}

std::string OneLine(const char* text, std::size_t longest) {
  if (text == nullptr) text = "(null)";
  const std::size_t length = strnlen(text, longest + 1);
  std::string line(text, std::min(length, longest));
  const auto isControl = [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; };
  std::ranges::replace_if(line, isControl, '?');
  return length > longest ? line + "..." : line;
}

std::uint64_t Hash(const void* data, std::size_t size, std::uint64_t hash) noexcept {
  const auto* const bytes = static_cast<const unsigned char*>(data);
  for (std::size_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 0x100000001B3u;
  return hash;
}

}  // namespace devkit
