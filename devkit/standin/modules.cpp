// KELUPG.dll, the action module of the upgrade, and KERegister.dll: each exports the function that its .def file names.
// They only log their calls.
#include "KEAction.h"
#include "KERegister.h"
#include "shared/files.h"

using namespace devkit;

uint32_t KE_ACTION_CALL Do(uint32_t first, uint32_t second) {
  constexpr std::uint32_t kVersionChanged = 1, kUninstall = 2;
  return Guarded([=] {
    const bool isKnown = first == kVersionChanged || first == kUninstall;
    return Logged("Do", isKnown ? kSuccess : kUnknownAction, std::to_string(first) + ";" + std::to_string(second));
  });
}

int KE_SIBLING_CALL KE_ReloadPlugins(void) {
  return Guarded([] { return Logged("KE_ReloadPlugins", kSuccess); });
}
