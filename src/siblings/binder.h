// Binding of sibling modules at run time, the same for all tables of functions.
#pragma once

#include <windows.h>

#include <cstddef>
#include <span>

#include "win/module.h"
#include "win/owner.h"

namespace siblings {

using win::BoundName;

constexpr std::size_t kSiblingPathSize = 2048;  // bytes of a module's path, with the terminating zero

/// The search for one module in its folders. Unless a folder has the module with every required name, the end of the
/// search traces the failure under `function`, in one line at level 0: "Could not load <path> - Error <last error>", or
/// "Could not load function for <path> - Error <last error>". The line is about the first folder, or about the first
/// one that has the module at all.
class SiblingSearch {
 public:
  /// The arguments must outlive the search.
  SiblingSearch(const char* function, const char* file) noexcept : function_(function), file_(file) {}
  ~SiblingSearch();
  SiblingSearch(const SiblingSearch&) = delete;
  SiblingSearch& operator=(const SiblingSearch&) = delete;

  /// Frees `module`, then loads the module from `folder`, which ends in a backslash, and binds `names` to `table`. The
  /// altered search path is used: the module's own dependencies come from its folder. "/" counts as "\".
  ///
  /// False when the module cannot be loaded, or lacks a required name; it is then loaded all the same, and the caller
  /// clears `table`. A null folder, a path that is not full and a path of more than 2047 characters fail with
  /// ERROR_BAD_PATHNAME: nothing is loaded from below the current directory.
  bool Bind(const char* folder, win::ModuleHandle& module, std::span<const BoundName> names, void* table) noexcept;

 private:
  const char* function_;
  const char* file_;
  enum { kNothingTried, kNotLoaded, kFunctionMissing, kFound } state_ = kNothingTried;
  DWORD error_ = 0;
  char path_[kSiblingPathSize] = {};
};

/// The functions of a freed or incomplete module: all null.
template <typename Table>
Table Cleared(const Table&) noexcept {
  return {};
}

/// A module and its functions, null while they are not bound. After a missing name the module stays loaded, with null
/// functions, until `Free` or the next `Bind`. Not thread-safe.
template <typename Table>
struct BoundModule {
  win::ModuleHandle module;
  Table functions{};

  bool Bind(const char* folder, SiblingSearch& search) noexcept {
    const bool bound = search.Bind(folder, module, Table::Names(), &functions);
    if (!bound) functions = Cleared(functions);
    return bound;
  }
  void Free() noexcept {
    module.Reset();
    functions = Cleared(functions);
  }
};

/// Traces at level 0 that a loaded module lacks a function that this use of it requires.
void TraceMissingFunction(const char* function, HMODULE module) noexcept;

}  // namespace siblings
