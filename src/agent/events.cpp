#include "agent/events.h"

#include <windows.h>

#include <cstdio>
#include <string>

#include "agent/texts.h"
#include "policy/scripts.h"
#include "siblings/binder.h"
#include "siblings/programs.h"
#include "text/paths.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/process.h"

namespace agent {

namespace {

using trace::kDetail;

siblings::EventApiScope BindModule() {
  return siblings::EventApiScope(text::SiblingFolder(win::GetModuleDirectory(), "KELTVEVT").c_str());
}

/// The name of this computer for an event record.
class ComputerName {
 public:
  explicit ComputerName(const char* function) {
    DWORD size = sizeof text_;
    if (GetComputerNameA(text_, &size)) return;
    Trace(kDetail, function, "Could not get computer name");
    text::CopyCut("UnKnownMachine", text_, sizeof text_);
  }
  const char* Text() const noexcept { return text_; }

 private:
  char text_[512] = {};
};

/// Closes an opened connection at the end of the scope.
struct StopAtEnd {
  ~StopAtEnd() { functions.TEVT_StopAPI(); }
  const siblings::EventApiTable& functions;
};

}  // namespace

EventConnection::EventConnection(const char* function) : function_(function), module_(BindModule()) {
  if (!module_) Trace(trace::kAlways, function, "Could not load TvEvAPI");
}

Sending EventConnection::Send(EventInfo event, EventCall call, void* context) const {
  const ComputerName computer(function_);
  event.computer = computer.Text();
  const siblings::EventApiTable& functions = module_.Functions();
  if (functions.TEVT_StartAPI() != 0) {
    Trace(kDetail, function_, "Failed to start TvEvAPI-TEVT_StartAPI");
    return {KE_EVENT_NOT_SENT, false};
  }
  const StopAtEnd stop{functions};
  return {call(functions, event, context) ? KE_RESULT{KE_SUCCESS} : KE_RESULT{KE_EVENT_NOT_SENT}, true};
}

namespace {

win::ModuleHandle LoadDescriptions(const char* function) {
  constexpr char kFile[] = "KePIRes.exe";
  const std::string folder = text::SiblingFolder(win::GetModuleDirectory(), "KESAgent");
  win::ModuleHandle module;
  siblings::SiblingSearch(function, kFile).Bind(folder.c_str(), module, {}, nullptr);
  if (!module) Trace(trace::kAlways, function, "Error loading %s%s", folder.c_str(), kFile);
  return module;
}

}  // namespace

KE_RESULT DescribeError(const char* function, std::uint32_t errorCode, const char* insert, char* buffer,
                        std::size_t size) {
  const win::ModuleHandle descriptions = LoadDescriptions(function);
  if (!descriptions) return KE_MODULE_NOT_LOADED;
  char resource[kDescriptionSize] = {};
  LoadStringA(descriptions.Get(), errorCode, resource, sizeof resource);
  if (*resource == '\0') {
    Trace(trace::kDetail, function, "No description found for ErrorCode: [%i]", static_cast<int>(errorCode));
    return KE_EVENT_NOT_SENT;
  }
  text::CopyCut(DescriptionText(resource, insert ? insert : ""), buffer, size);
  return KE_SUCCESS;
}

KE_RESULT GetEventDescription(std::uint32_t errorCode, char* buffer, std::int32_t size, const char* insert) noexcept {
  return trace::ExportCall("KE_GetEventDescription", [&](trace::Export& self) -> KE_RESULT {
    if (buffer == nullptr) return KE_MISSING_ARGUMENT;
    if (size <= 0) return KE_BUFFER_TOO_SMALL;
    return DescribeError(self.name, errorCode, insert, buffer, static_cast<std::size_t>(size));
  });
}

namespace {

using siblings::EventApiTable;
using text::OrNullText;
using trace::kDetail;

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
  Trace(kDetail, function, "Could not send UnInstall Event asociated with product: [%s]", OrNullText(product));
}

/// Removes the agent's shutdown script at the end of the scope, also when it ends in an exception.
struct RemoveScriptAtEnd {
  ~RemoveScriptAtEnd() { policy::DeleteShutdownInformation(nullptr, L"PROT_AGENTVOSK_UPG_SCRIPT=\"1\"", L"", 1); }
};

void WaitForDelivery(const char* function) {
  Trace(kDetail, function, "Starting time out to send the event");
  win::Pause(kDeliveryMilliseconds);
  Trace(kDetail, function, "Finishing time out to send the event");
}

KE_RESULT SendUninstalled(const char* function, const char* product) {
  const EventConnection events(function);
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
  const EventConnection events(function);
  if (!events) return KE_EVENTS_UNAVAILABLE;
  const UtcTime now;
  Trace(kDetail, function, "Fecha y Hora UTC: %s", now.Text());
  EventInfo info = EventOf(product);
  info.text = now.Text();
  const auto send = [&](const EventApiTable& functions, const EventInfo& event) {
    if (functions.TEVT_ScanState(&event, "Unknown", status, taskId) == 0) return true;
    Trace(kDetail, function, "Could not send State Event asociated with TaskId: [%s] and Status: [%i] to the Queue",
          OrNullText(taskId), static_cast<int>(status));
    return false;
  };
  return events.Send(info, send).result;
}

KE_RESULT SendRebootForced(const char* function, const char* product) {
  const EventConnection events(function);
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
  siblings::ExecuteLocalProcessAction("KELUPG", kUpgradeAction, 0);
  return SendUninstalled(function, product);
}

KE_RESULT SendError(const char* function, std::uint32_t eventClass, std::uint32_t source, std::uint32_t errorCode,
                    const char* insert) {
  const EventConnection events(function);
  if (!events) return KE_EVENTS_UNAVAILABLE;
  const int shownCode = static_cast<int>(errorCode);
  char description[kDescriptionSize] = {};
  if (const KE_RESULT described = GetEventDescription(errorCode, description, sizeof description, insert);
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

}  // namespace agent
