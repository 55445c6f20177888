// A sibling module that one export at a time binds and frees: the pattern of the launcher and of the plug-in
// registration module.
#pragma once

#include <span>

#include "frame/sibling_binder.h"
#include "win/owner.h"

namespace frame {

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

}  // namespace frame
