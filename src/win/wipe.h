// Wiping memory that held a secret.
#pragma once

#include <windows.h>

#include <cstddef>

namespace win {

/// Overwrites a block with zeros at the end of the scope, in a way that the optimiser keeps. The block must live that
/// long.
class WipeAtEnd {
 public:
  WipeAtEnd(void* data, std::size_t size) noexcept : data_(data), size_(size) {}
  ~WipeAtEnd() { SecureZeroMemory(data_, size_); }
  WipeAtEnd(const WipeAtEnd&) = delete;
  WipeAtEnd& operator=(const WipeAtEnd&) = delete;

 private:
  void* data_;
  std::size_t size_;
};

}  // namespace win
