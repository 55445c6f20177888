// The form in which the text of a store lies in its file: a marker and the enciphered text, or the text itself.
#pragma once

#include <cstddef>
#include <string_view>

namespace store {

/// What an enciphered file begins with, in any letter case.
inline constexpr std::string_view kMarker = "TVKE";

/// Block size of the cipher, in bytes.
inline constexpr std::size_t kBlockSize = 16;

/// `length` rounded up to whole blocks.
constexpr std::size_t PaddedLength(std::size_t length) noexcept {
  return (length + kBlockSize - 1) / kBlockSize * kBlockSize;
}

/// The text before the first zero byte of `bytes`, or all of it.
std::string_view UpToZero(std::string_view bytes) noexcept;

/// True when the content of a file is enciphered: it begins with the marker, and is longer than that before its first
/// zero byte. (A file whose first enciphered byte is zero therefore counts as plain.)
bool IsMarked(std::string_view content) noexcept;

}  // namespace store
