// The launcher module: bound by an export and freed before it returns. Callers serialise the exports that use it.
#pragma once

#include "KELUtils.h"
#include "frame/sibling_names.h"

namespace frame {

/// The functions of KELMNAPI.dll; null while not bound.
struct LauncherTable {
  KE_LAUNCHER_FUNCTIONS(KE_CALLED_MEMBER, KE_UNCALLED_MEMBER)
};

/// The bound functions.
const LauncherTable& Launcher() noexcept;

/// Binds the module from `folder`, which ends in a backslash; true at once when it is bound. A failure is traced.
bool LoadLauncher(const char* folder) noexcept;

/// Frees the module, also one that could not be bound completely.
void FreeLauncher() noexcept;

/// Frees the module at the end of a scope, whoever bound it.
struct FreeLauncherAtEnd {
  ~FreeLauncherAtEnd() { FreeLauncher(); }
};

/// Binds the module from the Common folder, else from the module directory: KE_SUCCESS or KE_LAUNCHER_NOT_LOADED, which
/// is traced.
KE_RESULT OpenLauncher();

}  // namespace frame
