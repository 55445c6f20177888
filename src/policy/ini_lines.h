// Lines of an INI file, split as the profile functions of Windows split them. The views point into the text.
#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <optional>
#include <string_view>
#include <type_traits>

#include "text/text.h"

namespace policy {

template <typename Char>
using TextView = std::basic_string_view<Char>;

/// Cuts the first line off `text` and returns it with its end: CR LF, LF, CR, or nothing at the end of the text.
template <typename Char>
TextView<Char> TakeLine(TextView<Char>& text) {
  const auto isBreak = [](Char c) { return c == '\r' || c == '\n'; };
  auto end = static_cast<std::size_t>(std::ranges::find_if(text, isBreak) - text.begin());
  if (end < text.size() && text[end++] == '\r' && end < text.size() && text[end] == '\n') ++end;
  const TextView<Char> line = text.substr(0, end);
  text.remove_prefix(end);
  return line;
}

/// `text` without surrounding blanks, tabs and line ends.
template <typename Char>
TextView<Char> Trimmed(TextView<Char> text) {
  const auto isBlank = [](Char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

/// A value as Windows returns it: trimmed, then without one surrounding pair of quotation marks of either kind.
template <typename Char>
TextView<Char> ReadValue(TextView<Char> text) {
  text = Trimmed(text);
  const bool quoted = text.size() >= 2 && text.front() == text.back() && (text[0] == '"' || text[0] == '\'');
  return quoted ? text.substr(1, text.size() - 2) : text;
}

/// Orders two names by their characters, ignoring the case of ASCII letters.
template <typename Char>
std::strong_ordering CompareNames(TextView<Char> left, std::type_identity_t<TextView<Char>> right) {
  return std::lexicographical_compare_three_way(
      left.begin(), left.end(), right.begin(), right.end(),
      [](Char a, Char b) { return text::LowerAscii(a) <=> text::LowerAscii(b); });
}

/// The name in a line "[name]", whatever follows the bracket; none for any other line.
template <typename Char>
std::optional<TextView<Char>> SectionName(TextView<Char> line) {
  const TextView<Char> text = Trimmed(line);
  const auto end = text.find(Char{']'});
  if (text.empty() || text.front() != '[' || end == text.npos) return std::nullopt;
  return text.substr(1, end - 1);
}

/// A line "key=value": the key trimmed, the value as written, without the end of the line.
template <typename Char>
struct KeyLine {
  TextView<Char> key;
  TextView<Char> value;
};

/// None for a line without "=".
template <typename Char>
std::optional<KeyLine<Char>> SplitLine(TextView<Char> line) {
  while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.remove_suffix(1);
  const auto separator = line.find(Char{'='});
  if (separator == line.npos) return std::nullopt;
  return KeyLine<Char>{Trimmed(line.substr(0, separator)), line.substr(separator + 1)};
}

/// True when `text` has a control character other than tab, CR and LF, and so is no INI text.
template <typename Char>
bool HasControlCharacters(TextView<Char> text) {
  return std::ranges::any_of(text, [](Char c) {
    return static_cast<std::make_unsigned_t<Char>>(c) < 0x20 && c != '\t' && c != '\r' && c != '\n';
  });
}

}  // namespace policy
