// A short hash of bytes: tells damage and different names, no forgery.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sharedfile {

/// The 64-bit FNV-1a hash of some bytes, or of bytes that follow those of which `hash` is the hash. Any one changed
/// byte changes it.
inline std::uint64_t Hash(const void* data, std::size_t size, std::uint64_t hash = 0xCBF29CE484222325u) noexcept {
  const auto* const bytes = static_cast<const unsigned char*>(data);
  for (std::size_t i = 0; i < size; ++i) hash = (hash ^ bytes[i]) * 0x100000001B3u;
  return hash;
}

}  // namespace sharedfile
