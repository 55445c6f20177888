#include "services/agent_events.h"

#include <windows.h>

#include <cstdio>

#include "frame/process_action.h"
#include "frame/text.h"
#include "frame/trace.h"
#include "frame/waiting.h"
#include "gpscripts/script_removal.h"
#include "services/description_text.h"
#include "services/event_sequence.h"

namespace services {
namespace {

using frame::EventApiTable;
using frame::kDetail;
using frame::Shown;

// Numbers whose meaning is the receiver's.
constexpr std::uint32_t kEventClass = 4;  // of every event but an error
constexpr std::int32_t kInstallFlag = 1;
constexpr std::uint32_t kUpgradeAction = 2;
constexpr char kAgentProduct[] = "KEAGENT";
constexpr DWORD kDeliveryMilliseconds = 30000;

EventInfo EventOf(const char* product) {
  EventInfo event{};
  event.eventClass = kEventClass;
  event.product = product;
  return event;
}

/// The present time in UTC, as "2024-03-05 07:08:09".
class UtcTime {
 public:
  UtcTime() noexcept {
    SYSTEMTIME now;
    GetSystemTime(&now);
    snprintf(text_, sizeof text_, "%.4i-%.2i-%.2i %.2i:%.2i:%.2i", now.wYear, now.wMonth, now.wDay, now.wHour,
             now.wMinute, now.wSecond);
  }
  const char* Text() const noexcept { return text_; }

 private:
  char text_[64];
};

void TraceProductNotSent(const char* function, const char* product) {
  Trace(kDetail, function, "Could not send UnInstall Event asociated with product: [%s]", Shown(product));
}

/// Removes the agent's shutdown script at the end of the scope, also when it ends in an exception.
struct RemoveScriptAtEnd {
  ~RemoveScriptAtEnd() { gpscripts::DeleteShutdownInformation(nullptr, L"PROT_AGENTVOSK_UPG_SCRIPT=\"1\"", L"", 1); }
};

void WaitForDelivery(const char* function) {
  Trace(kDetail, function, "Starting time out to send the event");
  frame::Pause(kDeliveryMilliseconds);
  Trace(kDetail, function, "Finishing time out to send the event");
}

KE_RESULT SendUninstalled(const char* function, const char* product) {
  const EventSequence events(function);
  if (!events) return KE_EVENTS_UNAVAILABLE;
  const Sending sending = events.Send(EventOf(product), [&](const EventApiTable& functions, const EventInfo& event) {
    if (functions.TEVT_Install(&event, kInstallFlag) == 0) return true;
    TraceProductNotSent(function, product);
    return false;
  });
  if (sending.connected) WaitForDelivery(function);  // with the module still loaded
  return sending.result;
}

}  // namespace

KE_RESULT SendScanState(const char* function, const char* product, const char* taskId, std::int32_t status) {
  const EventSequence events(function);
  if (!events) return KE_EVENTS_UNAVAILABLE;
  const UtcTime now;
  Trace(kDetail, function, "Fecha y Hora UTC: %s", now.Text());
  EventInfo info = EventOf(product);
  info.text = now.Text();
  const auto send = [&](const EventApiTable& functions, const EventInfo& event) {
    if (functions.TEVT_ScanState(&event, "Unknown", status, taskId) == 0) return true;
    Trace(kDetail, function, "Could not send State Event asociated with TaskId: [%s] and Status: [%i] to the Queue",
          Shown(taskId), static_cast<int>(status));
    return false;
  };
  return events.Send(info, send).result;
}

KE_RESULT SendRebootForced(const char* function, const char* product) {
  const EventSequence events(function);
  if (!events) return KE_EVENTS_UNAVAILABLE;
  const auto send = [&](const EventApiTable& functions, const EventInfo& event) {
    if (functions.TEVT_RebootForced(&event, "0") == 0) return true;
    TraceProductNotSent(function, product);
    return false;
  };
  return events.Send(EventOf(product), send).result;
}

KE_RESULT ReportUninstallation(const char* function, const char* product) {
  const RemoveScriptAtEnd removal;
  frame::ExecuteLocalProcessAction("KELUPG", kUpgradeAction, 0);
  return SendUninstalled(function, product);
}

KE_RESULT SendError(const char* function, std::uint32_t eventClass, std::uint32_t source, std::uint32_t errorCode,
                    const char* insert) {
  const EventSequence events(function);
  if (!events) return KE_EVENTS_UNAVAILABLE;
  const int shownCode = static_cast<int>(errorCode);
  char description[kDescriptionSize] = {};
  if (const KE_RESULT described = KE_GetEventDescription(errorCode, description, sizeof description, insert);
      described != KE_SUCCESS) {
    Trace(kDetail, function, "Could not get description for ErrorCode: [%i]", shownCode);
    return described;
  }
  Trace(kDetail, function, "Event Description Read : [%s]", description);
  char identifier[128];
  snprintf(identifier, sizeof identifier, "%s-%i", kAgentProduct, shownCode);
  const auto send = [&](const EventApiTable& functions, const EventInfo& event) {
    if (functions.TEVT_ErrorEvent(&event, source, identifier) == 0) return true;
    Trace(kDetail, function, "Could not send Error Event asociated with ErrorCode: [%i] to the Queue", shownCode);
    return false;
  };
  return events.Send({eventClass, nullptr, kAgentProduct, source, insert, description}, send).result;
}

}  // namespace services
