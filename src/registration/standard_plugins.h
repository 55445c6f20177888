// The plug-ins that every installation has: the files of their host modules below the installation folder.
#pragma once

#include "KELUtils.h"

namespace registration {

/// Each enters the standard plug-ins of one host module (configuration, update, upgrade) into its file, and creates the
/// folders of module and plug-ins, but not the installation folder itself. Other values of the file stay; so does what
/// was written before a failure. One trailing backslash of `root` does not count.
///
/// KE_SUCCESS; KE_MISSING_ARGUMENT when `root` is null, empty or a lone backslash; KE_STORE_UNUSABLE when a value could
/// not be written, which is traced.
KE_RESULT RegisterStdKelConfPlugins(const char* root);
KE_RESULT RegisterStdKelUpdPlugins(const char* root);
KE_RESULT RegisterStdKelUpgPlugins(const char* root);

/// Writes every registration file: the token files, then the files of the host modules. Stops at the first that fails
/// and returns its code; the ones before it stay. `root` is not null; KE_STORE_UNUSABLE when it has more than 32,000
/// characters.
KE_RESULT WriteRegistrationFiles(const char* root);

}  // namespace registration
