// The entry point. It always succeeds: after a failed step the exports return their codes.
#include <windows.h>

#include "siblings/windows_tables.h"
#include "store/integra_store.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/random_number.h"

namespace {

// Runs one step of attach or detach. An exception is written to the silent sink and does not stop the next step.
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
  siblings::BindWindowsTables();
}

void Detach() noexcept {
  Guarded("Exception finalizing Module", [] {
    win::DetachModule();
    store::DropIntegraStore();
  });
  Guarded("Exception finalizing Critical Section", [] { win::IntegraLock.Destroy(); });
  siblings::ReleaseWindowsTables();
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* reserved) {
  if (reason == DLL_PROCESS_ATTACH) Attach(module);
  // At the end of the process (reserved is not null) Windows has stopped the other threads, perhaps inside a lock, and
  // frees all memory: waiting here could hang the host forever.
  if (reason == DLL_PROCESS_DETACH && reserved == nullptr) Detach();
  return TRUE;
}
