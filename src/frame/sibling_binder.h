// Binding of modules that are loaded at run time: one list of names per table of function pointers, one engine for all.
#pragma once

#include <windows.h>

#include <cstddef>
#include <span>

#include "win/owner.h"

namespace frame {

enum Presence { kOptional, kRequired };

/// One name to look up: where in the table its pointer is stored, and whether the table is of use without it.
struct BoundName {
  const char* name;
  std::size_t offset;
  Presence presence;
};

/// A row for the member `function` of `Table`, which has the name of the function it holds.
#define KE_BOUND_NAME(Table, function, presence) \
  ::frame::BoundName { #function, offsetof(Table, function), ::frame::presence }

/// Looks the names up in their order and stores the functions in `table`. At the first required name that is missing it
/// stops and returns false; the functions stored before it stay for the caller to clear. Traces nothing.
bool BindNames(HMODULE module, void* table, std::span<const BoundName> names) noexcept;

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

}  // namespace frame
