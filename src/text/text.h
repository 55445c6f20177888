// Comparing, cutting and reading texts.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string_view>

namespace text {

/// True for a null text and for the empty one.
inline bool IsBlank(const char* text) noexcept { return text == nullptr || *text == '\0'; }

/// `text` for a trace line.
inline const char* OrNullText(const char* text) noexcept { return text ? text : "(null)"; }

/// Copies a text into a buffer of `size` bytes, which is not 0, cut to fit before its terminating zero.
inline void CopyCut(std::string_view text, char* buffer, std::size_t size) noexcept {
  buffer[text.copy(buffer, size - 1)] = '\0';
}

/// The lower case of an ASCII letter; other characters unchanged.
template <typename Char>
constexpr Char LowerAscii(Char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<Char>(c - 'A' + 'a') : c;
}

/// True when two names are the same but for ASCII letter case.
template <typename Left, typename Right>
bool SameName(std::basic_string_view<Left> left, std::basic_string_view<Right> right) noexcept {
  return std::ranges::equal(left, right, {}, LowerAscii<Left>, LowerAscii<Right>);
}
inline bool SameName(std::string_view left, std::string_view right) noexcept {
  return SameName<char, char>(left, right);
}

/// The base-10 integer at the beginning of `text`, which is not null: after white space and one sign, up to the first
/// character that is no digit. 0 without digits; a number out of range becomes the nearest 32-bit one.
inline std::int32_t DecimalFromText(const char* text) noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  const long long number = std::strtoll(text, nullptr, 10);
  return static_cast<std::int32_t>(std::clamp<long long>(number, Limits::min(), Limits::max()));
}

/// The number in a text of decimal digits alone, with "-" before them for a signed type; none for any other text, and
/// for a number out of range.
template <typename Number>
std::optional<Number> NumberFromText(std::string_view text) noexcept {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

}  // namespace text
