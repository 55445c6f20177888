// The token files below the installation folder. Each function creates the folders it needs, but not the installation
// folder itself, writes its file from constants and the folder's name, and traces its start and end.
//
// KE_SUCCESS; KE_MISSING_ARGUMENT when `root` is null, empty or a lone backslash; KE_STORE_UNUSABLE, traced, when the
// file could not be opened, or a value of KesWD.conf not written; KE_EXCEPTION. One trailing backslash of `root` does
// not count.
#pragma once

#include "KELUtils.h"

namespace registration {

/// plugins.tok of the plug-in manager: its plug-in modules. Written whole.
KE_RESULT MkKesLpMngTokens(const char* root);

/// tokens.tok of the scheduler: the programs that its jobs may name. Written whole; the programs' folders are created
/// too.
KE_RESULT MkSchedulerKepLpMngToken(const char* root);

/// KesWD.conf of the watchdog: the services it supervises, whose folders are created too. Other keys and sections stay;
/// what was written before a failure stays too.
KE_RESULT MkKesWdTokens(const char* root);

}  // namespace registration
