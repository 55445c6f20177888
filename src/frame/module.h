// What is known about the loaded module itself: its handle, its directory, and the one lock of the integration store.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "win/critical_section.h"

namespace frame {

/// Records the module whose directory all paths start from, and works the directory out. Called once, at process
/// attach; throws when memory runs out, after the handle is recorded.
void AttachModule(HMODULE module);

/// Forgets the kept directory. The last call of a loaded module's life.
void DetachModule() noexcept;

/// The folder that holds the module, without a trailing backslash. Empty when it is unknown, which it also is when its
/// 8-bit form would stand for another folder (`win::ToCodePage`). Asked again on every call.
std::string GetModuleDirectory();

/// The copy of that text kept at attach; empty before attach, after detach and when the directory is unknown.
std::string_view KeptModuleDirectory() noexcept;

/// The global lock: guards the cached integration store, its file stamp and every read, write and repair of its files.
/// Re-entrant. Exists from `Create`, at process attach, to `Destroy`, at process detach.
extern win::ManualCriticalSection IntegraLock;

}  // namespace frame
