// The product's name and install path, as the registry and the environment give them.
#pragma once

#include <cstddef>
#include <memory>

namespace kelcrt {

/// Reads the product's name and install path when it is made; the object never changes afterwards.
class CProductInfo {
 public:
  /// Throws when memory runs out.
  CProductInfo();
  virtual ~CProductInfo() = default;
  CProductInfo(const CProductInfo&) = delete;
  CProductInfo& operator=(const CProductInfo&) = delete;

  /// The name in the registry, or the default name when that is missing or empty.
  const char* GetProductName() const noexcept { return productName_.get(); }

  /// The path in the environment variable VOSK_TESTING_INSTALLPATH when that is set, else the registry's, which may be
  /// empty. A path of 260 characters or more counts as not set. Used as it stands: it ends in a backslash.
  const char* GetInstallPath() const noexcept;

 private:
  static constexpr std::size_t kSize = 260;  // characters of each buffer, with the terminating zero
  using Buffer = std::unique_ptr<char[]>;

  Buffer productName_ = std::make_unique<char[]>(kSize);
  Buffer installPath_ = std::make_unique<char[]>(kSize);
  Buffer testingInstallPath_ = std::make_unique<char[]>(kSize);
};

}  // namespace kelcrt
