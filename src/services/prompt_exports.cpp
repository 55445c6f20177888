// The exports that ask the user, and those that close what the user sees of an installation.
#include "KELUtils.h"
#include "frame/export_call.h"
#include "services/install_guide.h"
#include "services/prompts.h"

using frame::Export;
using frame::ExportCall;

KE_RESULT KE_API KE_GetCanReboot(uint32_t* canReboot) {
  return ExportCall(__func__, [&](Export&) { return KE_GetCanRebootEx(canReboot, 0); });
}

KE_RESULT KE_API KE_GetCanRebootEx(uint32_t* canReboot, uint32_t /*unused*/) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (canReboot == nullptr) return KE_MISSING_ARGUMENT;
    *canReboot = 0;
    return services::AskCanReboot(self.name, *canReboot);
  });
}

KE_RESULT KE_API KE_ShowRebootCountDown(int32_t seconds) {
  return ExportCall(__func__, [&](Export& self) { return services::ShowRebootCountDown(self.name, seconds); });
}

KE_RESULT KE_API KE_GetUserResponse(uint32_t* canReboot, int32_t msgType, int32_t seconds) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (canReboot == nullptr) return KE_MISSING_ARGUMENT;
    *canReboot = 0;
    return services::AskUser(self.name, msgType, seconds, *canReboot);
  });
}

KE_RESULT KE_API KE_ShowInstallDialog(void) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    KE_ShowInstallDialogEx(0);
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_ShowInstallDialogEx(uint32_t rebootMsg) {
  return ExportCall(__func__, [&](Export& self) { return services::ShowInstallDialog(self.name, rebootMsg); });
}

KE_RESULT KE_API KE_HideInstallDialog(void) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    services::CloseInstallDialog();
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_HideInstalationGuide(void) {
  return ExportCall(__func__, [&](Export&) { return services::HideInstallGuide(); });
}
