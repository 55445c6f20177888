// The INI file beside the DLL or program that this is linked into: its path, with the extension ".ini". It is read anew
// for each value, so that a change takes effect at once. No function throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace settings {

/// The longest text that a setting may have.
inline constexpr std::size_t kLongestText = 1023;

/// What became of a text that was looked for.
enum class Reading {
  kFound,
  kMissing,   // no file, no such key, or an empty value
  kUnusable,  // longer than there is room for
};

/// Reads a text into `text`, of `size` bytes (1 to kLongestText + 1) with the terminating zero. Unless it is found,
/// `text` becomes empty.
Reading ReadText(const char* section, const char* key, char* text, std::size_t size) noexcept;

/// Reads a number; `fallback` when it is missing, none when it is no number or outside of the two bounds.
std::optional<std::int32_t> ReadNumber(const char* section, const char* key, std::int32_t fallback,
                                       std::int32_t lowest = INT32_MIN, std::int32_t highest = INT32_MAX) noexcept;

}  // namespace settings
