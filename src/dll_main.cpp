// The entry point. It always reports success: a step that fails leaves the exports to answer with their codes.
#include <windows.h>

#include "siblings/windows_tables.h"
#include "store/integra_store.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/random_number.h"

namespace {

// Runs one step of attach or detach; an exception is named to the silent sink and the next step goes on.
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
  // When the process ends (reserved is not null) its other threads were stopped wherever they stood, perhaps inside a
  // lock: the platform takes all memory back, and waiting here could hang the host for good.
  if (reason == DLL_PROCESS_DETACH && reserved == nullptr) Detach();
  return TRUE;
}
