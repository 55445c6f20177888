// Small questions about texts and names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace text {

/// True for a null text and for the empty one.
inline bool IsBlank(const char* text) noexcept { return text == nullptr || *text == '\0'; }

/// What stands for a text in a trace line.
inline const char* OrNullText(const char* text) noexcept { return text ? text : "(null)"; }

/// Copies a text into a buffer of `size` bytes, which is not 0, cut to what fits before its terminating zero.
inline void CopyCut(std::string_view text, char* buffer, std::size_t size) noexcept {
  buffer[text.copy(buffer, size - 1)] = '\0';
}

/// True when two names are the same but for ASCII letter case.
bool SameName(std::string_view left, std::string_view right) noexcept;

// Decimal numbers in texts of settings and stores.

/// The base-10 integer that `text` begins with: white space and one sign may stand before the digits, the first other
/// character ends them. 0 when there are no digits; a number out of range becomes the nearest 32-bit one. `text` is not
/// null.
std::int32_t DecimalFromText(const char* text) noexcept;

}  // namespace text
