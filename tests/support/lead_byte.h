// The characters of Japanese Windows, for tests on any other.
#pragma once

namespace support {

/// True for the first byte of a two-byte character of code page 932. The second byte may be that of a backslash.
inline bool IsLeadByte932(char byte) noexcept {
  const auto value = static_cast<unsigned char>(byte);
  return (value >= 0x81 && value <= 0x9F) || (value >= 0xE0 && value <= 0xFC);
}

}  // namespace support
