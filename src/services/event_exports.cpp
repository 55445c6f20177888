// The exports that report events.
#include "KELUtils.h"
#include "frame/component.h"
#include "frame/export_call.h"
#include "services/agent_events.h"
#include "services/event_description.h"

using frame::Export;
using frame::ExportCall;

KE_RESULT KE_API KE_ScanStateEvent(const char* product, const char* taskId, int32_t status) {
  return ExportCall(__func__,
                    [&](Export& self) { return services::SendScanState(self.name, product, taskId, status); });
}

KE_RESULT KE_API KE_RebootForcedEvent(const char* product) {
  return ExportCall(__func__, [&](Export& self) { return services::SendRebootForced(self.name, product); });
}

KE_RESULT KE_API KE_Uninstall(const char* product) {
  return ExportCall(__func__, [&](Export& self) { return services::ReportUninstallation(self.name, product); });
}

KE_RESULT KE_API KE_GenerateEvent(uint32_t eventClass, uint32_t source, uint32_t errorCode, const char* insertText) {
  return ExportCall(__func__, [&](Export& self) {
    return services::SendError(self.name, eventClass, source, errorCode, insertText);
  });
}

KE_RESULT KE_API KE_GetEventDescription(uint32_t errorCode, char* buffer, int32_t bufferSize, const char* insertText) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (buffer == nullptr) return KE_MISSING_ARGUMENT;
    if (bufferSize <= 0) return KE_BUFFER_TOO_SMALL;
    return services::DescribeError(self.name, errorCode, insertText, buffer, static_cast<std::size_t>(bufferSize));
  });
}

KE_RESULT KE_API KE_InitEventSystem(void) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    const frame::ComponentRun run = frame::RunComponent(self.name, "KELTVEVT", "KELTVEVT -start");
    if (run.exitCode != 0) frame::TraceComponentFailed(self.name, "KELTVEVT", run.exitCode);
    const bool started = run.launcherBound && run.launcherResult == 0 && run.exitCode == 0;
    return started ? KE_SUCCESS : KE_EVENTS_UNAVAILABLE;
  });
}
