// What is known about the loaded module itself: its handle, its directory, and the one lock of the integration store.
#pragma once

#include <windows.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "win/owner.h"

namespace win {

/// Records the module whose directory all paths start from, and works the directory out. Called once, at process
/// attach; throws when memory runs out, after the handle is recorded.
void AttachModule(HMODULE module);

/// Forgets the kept directory. The last call of a loaded module's life.
void DetachModule() noexcept;

/// The folder that holds the module, without a trailing backslash. Empty when it is unknown, which it also is when its
/// 8-bit form would stand for another folder (`ToCodePage`). Asked again on every call.
std::string GetModuleDirectory();

/// The copy of that text kept at attach; empty before attach, after detach and when the directory is unknown.
std::string_view KeptModuleDirectory() noexcept;

/// The global lock: guards the cached integration store, its file stamp and every read, write and repair of its files.
/// Re-entrant. Exists from `Create`, at process attach, to `Destroy`, at process detach.
extern ManualCriticalSection IntegraLock;

}  // namespace win

// The product's name and install path, as the registry and the environment give them.

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
