// Numbers in texts of settings.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace settings {

/// The decimal number that the whole text is; a minus sign before it and blanks around it are allowed. None for
/// anything else, and for a number that 32 bits do not hold.
std::optional<std::int32_t> ParseNumber(std::string_view text) noexcept;

struct Numbers {
  std::array<std::int32_t, 64> values{};
  std::size_t count = 0;  // at least 1
};

/// One to 64 numbers with commas between them; none for anything else.
std::optional<Numbers> ParseNumbers(std::string_view text) noexcept;

}  // namespace settings
