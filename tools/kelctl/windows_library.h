// KELUtils.dll, loaded at run time.
#pragma once

#include <memory>

#include "library.h"

namespace kelctl {

/// Loads the DLL at `path` (UTF-8, relative to the current directory), or KELUtils.dll beside this program when `path`
/// is empty. The DLL stays loaded as long as the result lives. Throws LibraryError.
std::unique_ptr<Library> OpenWindowsLibrary(const std::string& path);

}  // namespace kelctl
