#include "frame/fs_redirection.h"

#include <windows.h>

#include <cstring>

#include "win/last_error.h"

namespace frame {
namespace {

// Calls a function of Kernel32.dll that 32-bit Windows and releases before XP SP2 lack; looked up at every call.
template <typename Argument>
bool CallKernel32(const char* name, Argument argument) noexcept {
  BOOL(WINAPI * function)(Argument) = nullptr;
  const FARPROC found = GetProcAddress(GetModuleHandleW(L"Kernel32.dll"), name);
  if (found == nullptr) {
    SetLastError(ERROR_INVALID_FUNCTION);
    return false;
  }
  std::memcpy(&function, &found, sizeof function);
  return function(argument) != FALSE;
}

}  // namespace

bool DisableFsRedirection(void** old) noexcept { return CallKernel32("Wow64DisableWow64FsRedirection", old); }

bool RevertFsRedirection(void* old) noexcept { return CallKernel32("Wow64RevertWow64FsRedirection", old); }

UnredirectedFiles::~UnredirectedFiles() {
  const win::KeptLastError keep;
  if (off_) RevertFsRedirection(old_);
}

}  // namespace frame
