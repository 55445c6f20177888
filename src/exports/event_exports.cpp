// The exports that report events.

#include "KELUtils.h"
#include "agent/agent.h"
#include "trace/trace.h"

using trace::Export;
using trace::ExportCall;

KE_RESULT KE_API KE_ScanStateEvent(const char* product, const char* taskId, int32_t status) {
  return ExportCall(__func__, [&](Export& self) { return agent::SendScanState(self.name, product, taskId, status); });
}

KE_RESULT KE_API KE_RebootForcedEvent(const char* product) {
  return ExportCall(__func__, [&](Export& self) { return agent::SendRebootForced(self.name, product); });
}

KE_RESULT KE_API KE_Uninstall(const char* product) {
  return ExportCall(__func__, [&](Export& self) { return agent::ReportUninstallation(self.name, product); });
}

KE_RESULT KE_API KE_GenerateEvent(uint32_t eventClass, uint32_t source, uint32_t errorCode, const char* insertText) {
  return ExportCall(
      __func__, [&](Export& self) { return agent::SendError(self.name, eventClass, source, errorCode, insertText); });
}

KE_RESULT KE_API KE_GetEventDescription(uint32_t errorCode, char* buffer, int32_t bufferSize, const char* insertText) {
  return agent::GetEventDescription(errorCode, buffer, bufferSize, insertText);
}

KE_RESULT KE_API KE_InitEventSystem(void) {
  return ExportCall(__func__, [&](Export& self) { return agent::StartEventService(self.name); });
}
