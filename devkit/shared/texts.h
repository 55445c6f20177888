// Numbers and lines of text: no call of Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace devkit {

/// The decimal number that is the whole text, with a minus sign or without a sign; none for anything else and for a
/// number outside the bounds.
std::optional<std::int64_t> ParseNumber(std::string_view text, std::int64_t lowest, std::int64_t highest) noexcept;

/// 1 to 64 numbers of 32 bits with commas between them, and blanks around them; empty for anything else.
std::vector<std::int32_t> ParseNumbers(std::string_view text);

/// At most `longest` bytes of a text on one line, and "..." when there are more; reads at most one byte more. Control
/// characters become "?". A null text is "(null)".
std::string OneLine(const char* text, std::size_t longest = 512);

/// The 64-bit FNV-1a hash of some bytes, or of bytes that follow those of which `hash` is the hash. Any changed byte
/// changes it.
std::uint64_t Hash(const void* data, std::size_t size, std::uint64_t hash = 0xCBF29CE484222325u) noexcept;

}  // namespace devkit
