// The exports that ask the user, close the windows of an installation, and identify the machine.

#include "KELUtils.h"
#include "agent/agent.h"
#include "agent/uuid.h"
#include "trace/trace.h"

using trace::Export;
using trace::ExportCall;

KE_RESULT KE_API KE_GetCanReboot(uint32_t* canReboot) {
  return ExportCall(__func__, [&](Export&) { return KE_GetCanRebootEx(canReboot, 0); });
}

KE_RESULT KE_API KE_GetCanRebootEx(uint32_t* canReboot, uint32_t /*unused*/) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (canReboot == nullptr) return KE_MISSING_ARGUMENT;
    *canReboot = 0;
    return agent::AskCanReboot(self.name, *canReboot);
  });
}

KE_RESULT KE_API KE_ShowRebootCountDown(int32_t seconds) {
  return ExportCall(__func__, [&](Export& self) { return agent::ShowRebootCountDown(self.name, seconds); });
}

KE_RESULT KE_API KE_GetUserResponse(uint32_t* canReboot, int32_t msgType, int32_t seconds) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (canReboot == nullptr) return KE_MISSING_ARGUMENT;
    *canReboot = 0;
    return agent::AskUser(self.name, msgType, seconds, *canReboot);
  });
}

KE_RESULT KE_API KE_ShowInstallDialog(void) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    KE_ShowInstallDialogEx(0);
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_ShowInstallDialogEx(uint32_t rebootMsg) {
  return ExportCall(__func__, [&](Export& self) { return agent::ShowInstallDialog(self.name, rebootMsg); });
}

KE_RESULT KE_API KE_HideInstallDialog(void) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    agent::CloseInstallDialog();
    return KE_SUCCESS;
  });
}

KE_RESULT KE_API KE_HideInstalationGuide(void) {
  return ExportCall(__func__, [&](Export&) { return agent::HideInstallGuide(); });
}

KE_RESULT KE_API KE_GetUUID(char* buffer, int32_t bufferSize) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (buffer == nullptr) return KE_MISSING_ARGUMENT;
    if (bufferSize <= 0) return KE_BUFFER_TOO_SMALL;
    return agent::QueryMachineUuid(self.name, buffer, static_cast<std::size_t>(bufferSize));
  });
}
