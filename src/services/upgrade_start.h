// The start of an upgrade: brings the configuration files of an existing installation up to the current layout.
#pragma once

#include "KELUtils.h"

namespace services {

/// Writes message types, event settings, module tokens and the settings of all modules below `installDir`, which is not
/// null; text beyond 511 characters and one trailing backslash are dropped. Every step is tried, whatever became of the
/// ones before it; each failed write is traced.
///
/// KE_MISSING_ARGUMENT when nothing is left of the directory; KE_STORE_UNUSABLE when a write that counts failed.
KE_RESULT StartUpgrade(const char* installDir);

}  // namespace services
