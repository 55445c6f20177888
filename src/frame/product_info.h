// The product's name and install path, as the registry and the environment give them.
#pragma once

#include <cstddef>
#include <memory>

namespace kelcrt {

/// The environment variable that names the install path for tests; empty in builds for customers. The path leads to
/// code that is loaded into a program that may run with more rights than the user who sets the variable.
extern const char kTestingPathVariable[];

/// Reads the product's name and install path when it is made; the object never changes afterwards.
class CProductInfo {
 public:
  /// The environment variable counts unless its name is empty. Throws when memory runs out.
  explicit CProductInfo(const char* testingPathVariable = kTestingPathVariable);
  virtual ~CProductInfo() = default;
  CProductInfo(const CProductInfo&) = delete;
  CProductInfo& operator=(const CProductInfo&) = delete;

  /// The name in the registry, or the default name when that is missing or empty.
  const char* GetProductName() const noexcept { return productName_.get(); }

  /// The path in the environment variable when that is set, else the registry's, which may be empty. A path of 260
  /// characters or more counts as not set. Used as it stands: it ends in a backslash.
  const char* GetInstallPath() const noexcept;

 private:
  static constexpr std::size_t kSize = 260;  // characters of each buffer, with the terminating zero
  using Buffer = std::unique_ptr<char[]>;

  Buffer productName_ = std::make_unique<char[]>(kSize);
  Buffer installPath_ = std::make_unique<char[]>(kSize);
  Buffer testingInstallPath_ = std::make_unique<char[]>(kSize);
};

}  // namespace kelcrt
