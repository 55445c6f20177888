// COM, loaded only while it is used: few hosts ever need it.
#pragma once

#include "win/com.h"
#include "win/owner.h"

namespace frame {

/// Keeps the modules of COM loaded while it lives. Outlives every object and scope made with its functions.
class ComLibrary {
 public:
  ComLibrary() noexcept;

  /// The functions; null when any is missing.
  const win::ComTable* Functions() const noexcept { return bound_ ? &functions_ : nullptr; }

 private:
  win::ModuleHandle ole32_;
  win::ModuleHandle oleaut32_;
  win::ComTable functions_{};
  bool bound_;
};

}  // namespace frame
