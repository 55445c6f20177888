// Binding of modules that are loaded at run time: one list of names per table of function pointers, one engine for all.
#pragma once

#include <windows.h>

#include <cstddef>
#include <span>

#include "win/function_table.h"
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
  SiblingSearch(const char* function, const char* file, std::span<const BoundName> names) noexcept
      : function_(function), file_(file), names_(names) {}
  ~SiblingSearch();
  SiblingSearch(const SiblingSearch&) = delete;
  SiblingSearch& operator=(const SiblingSearch&) = delete;

  /// Frees `module`, then loads the module from `folder`, which ends in a backslash, and binds its names into `table`.
  /// The altered search path is used, so the module's own dependencies come from its folder. "/" counts as "\".
  ///
  /// False when the module cannot be loaded or lacks a required name; it is then loaded all the same, and `table` is to
  /// be cleared. A null folder, a path that is not full and a path of more than 2047 characters fail with
  /// ERROR_BAD_PATHNAME: nothing is loaded from below the current directory.
  bool Bind(const char* folder, win::ModuleHandle& module, void* table) noexcept;

 private:
  const char* function_;
  const char* file_;
  std::span<const BoundName> names_;
  enum { kNothingTried, kNotLoaded, kFunctionMissing, kFound } state_ = kNothingTried;
  DWORD error_ = 0;
  char path_[kSiblingPathSize] = {};
};

/// Traces at level 0 that a loaded module lacks a function that this use of it requires.
void TraceMissingFunction(const char* function, HMODULE module) noexcept;

// A sibling module that one export at a time binds and frees: the pattern of the launcher and of the plug-in
// registration module.

/// A module and its table of functions. Not guarded: the exports that use one are serialised by their callers.
template <typename Table>
class ModuleTable {
 public:
  constexpr ModuleTable(const char* file, std::span<const BoundName> names) noexcept : file_(file), names_(names) {}

  /// The functions; null while not bound.
  const Table& Functions() const noexcept { return table_; }

  /// A search for this module, for `Load`.
  SiblingSearch Search(const char* function) const noexcept { return {function, file_, names_}; }

  /// Binds every name from `folder`, which ends in a backslash; true at once when bound already. After a missing name
  /// the module stays loaded, with null functions, until `Free` or the next `Load`.
  bool Load(const char* folder, SiblingSearch& search) noexcept {
    if (bound_) return true;
    bound_ = search.Bind(folder, module_, &table_);
    if (!bound_) table_ = {};
    return bound_;
  }

  /// Frees the module if it is loaded and clears the functions.
  void Free() noexcept {
    module_.Reset();
    table_ = {};
    bound_ = false;
  }

 private:
  const char* file_;
  std::span<const BoundName> names_;
  win::ModuleHandle module_;
  Table table_{};
  bool bound_ = false;
};

}  // namespace siblings
