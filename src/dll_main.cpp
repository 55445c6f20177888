// The entry point. It always reports success: after a step that failed the exports return their codes.
#include <windows.h>

#include <cstring>
#include <iterator>

#include "store/integra_store.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/random_number.h"

namespace {

// Functions that not every supported release of Windows has. The agent's interface asks for both modules to be bound
// while the library is loaded; nothing calls the functions.
constexpr char kAdvapi32Names[] =
    "CreateWellKnownSid\0GetFileSecurityA\0GetFileSecurityW\0GetSecurityDescriptorDacl\0BuildTrusteeWithSidA\0"
    "BuildTrusteeWithSidW\0GetEffectiveRightsFromAclA\0GetEffectiveRightsFromAclW\0InitializeAcl\0"
    "GetAclInformation\0GetAce\0LookupAccountSidA\0LookupAccountSidW\0AddAce\0DuplicateTokenEx\0CryptAcquireContextA\0"
    "CryptAcquireContextW\0InitializeSecurityDescriptor\0AllocateAndInitializeSid\0AddAccessAllowedAceEx\0"
    "SetSecurityDescriptorDacl\0SetFileSecurityA\0SetFileSecurityW\0StartServiceCtrlDispatcherA\0"
    "StartServiceCtrlDispatcherW\0RegisterServiceCtrlHandlerA\0RegisterServiceCtrlHandlerW\0SetServiceStatus\0"
    "RegisterServiceCtrlHandlerExA\0RegisterServiceCtrlHandlerExW\0ConvertStringSidToSidA\0ConvertStringSidToSidW\0"
    "GetInheritanceSourceA\0GetInheritanceSourceW\0FreeInheritedFromArray\0SetSecurityDescriptorControl\0"
    "GetSecurityDescriptorControl\0";
constexpr char kShell32Names[] =
    "SHBindToParent\0SHGetFolderLocation\0SHGetFolderPathA\0SHGetFolderPathW\0SHGetLocalizedName\0ShellExecuteExA\0"
    "ShellExecuteExW\0SHChangeNotify\0";

// A module of Windows and its functions; null where the release has none.
struct WindowsTable {
  HMODULE module;  // freed by `Release`, never by a destructor at the end of the process
  FARPROC functions[37];

  // `names` are zero-terminated texts in sequence, ended by an empty one.
  void Bind(const char* file, const char* names) noexcept {
    module = win::LoadModule(file, 0).Release();
    if (module == nullptr) return;
    for (FARPROC* next = functions; *names != '\0' && next != std::end(functions); names += std::strlen(names) + 1) {
      *next++ = win::FunctionOf(module, names);
    }
  }
  void Release() noexcept {
    win::ModuleHandle(module).Reset();
    *this = {};
  }
};

WindowsTable g_advapi32{}, g_shell32{};

// Runs one step of attach or detach; an exception is reported to the debug trace, and the next step runs.
template <typename Step>
void Guarded(const char* failure, Step step) noexcept {
  try {
    step();
  } catch (...) {
    trace::DebugTrace("%s", failure);
  }
}

void Attach(HMODULE module) noexcept {
  win::SeedRandomNumbers();
  Guarded("Exception initializing Module", [&] { win::AttachModule(module); });
  Guarded("Exception initializing Critical Section", [] { win::IntegraLock.Create(); });
  g_advapi32.Bind("Advapi32.dll", kAdvapi32Names);
  g_shell32.Bind("Shell32.dll", kShell32Names);
}

void Detach() noexcept {
  Guarded("Exception finalizing Module", [] {
    win::DetachModule();
    store::DropIntegraStore();
  });
  Guarded("Exception finalizing Critical Section", [] { win::IntegraLock.Destroy(); });
  g_shell32.Release();
  g_advapi32.Release();
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved) {
  if (reason == DLL_PROCESS_ATTACH) Attach(module);
  // When the process ends (reserved is not null) its other threads were stopped, perhaps inside a lock. Windows frees
  // all memory, and waiting here could hang the host.
  if (reason == DLL_PROCESS_DETACH && reserved == nullptr) Detach();
  return TRUE;
}
