// Where a module keeps its own files: beside the DLL or program that this is linked into. Paths are in the system's
// code page.
#pragma once

#include <windows.h>

namespace sharedfile {

/// The full path of the module itself. False when it is too long.
bool FindOwnPath(char (&path)[MAX_PATH]) noexcept;

/// The module's path with another extension, which begins with a dot. False when it is too long.
bool FindWithExtension(const char* extension, char (&path)[MAX_PATH]) noexcept;

/// The path of the file `name` in the module's folder. False when it is too long.
bool FindBeside(const char* name, char (&path)[MAX_PATH]) noexcept;

}  // namespace sharedfile
