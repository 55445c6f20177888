#include <windows.h>

#include <cstddef>
#include <cstdio>
#include <string>

#include "agent/agent.h"
#include "agent/texts.h"
#include "policy/script_registration.h"
#include "siblings/binder.h"
#include "siblings/modules.h"
#include "siblings/programs.h"
#include "siblings/sibling_table.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/gate.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/process.h"

namespace agent {

namespace {

using siblings::EventApiTable;
using text::OrNullText;
using trace::kDetail;

static_assert(sizeof(EventInfo) == 24 && offsetof(EventInfo, eventClass) == 0 && offsetof(EventInfo, computer) == 4 &&
              offsetof(EventInfo, product) == 8 && offsetof(EventInfo, extra) == 12 &&
              offsetof(EventInfo, text) == 16 && offsetof(EventInfo, description) == 20);

// Numbers defined by the receiver.
constexpr std::uint32_t kEventClass = 4;  // of every event but an error
constexpr std::int32_t kInstallFlag = 1;
constexpr std::uint32_t kUpgradeAction = 2;
constexpr char kAgentProduct[] = "KEAGENT";
constexpr DWORD kDeliveryMilliseconds = 30000;

// Closes an open connection at the end of the scope.
struct StopAtEnd {
  ~StopAtEnd() { functions.TEVT_StopAPI(); }
  const EventApiTable& functions;
};

// The outcome of sending an event: KE_SUCCESS or KE_EVENT_NOT_SENT, and whether there was a connection.
struct Sending {
  KE_RESULT result;
  bool connected;
};

// The event module, bound for one export.
struct EventModule {
  explicit EventModule(const char* name)

      : function(name), folder(win::FolderOf(siblings::kEventModule.folder)), api(folder ? folder->c_str() : nullptr) {
    if (!api) Trace(trace::kAlways, function, "Could not load TvEvAPI");
  }

  // Opens a connection, has `call(functions, event)` send the event with the name of the computer, and closes the
  // connection, also after an exception. `call` returns whether the event was queued, and traces a failure.
  template <typename Call>
  Sending Send(EventInfo event, Call call) const {
    char computer[512] = {};
    if (DWORD size = sizeof computer; !win::Passes(win::Call::kName) || !GetComputerNameA(computer, &size)) {
      Trace(kDetail, function, "Could not get computer name");
      text::CopyCut("UnKnownMachine", computer, sizeof computer);
    }
    event.computer = computer;
    if (api.Functions().TEVT_StartAPI() != 0) {
      Trace(kDetail, function, "Failed to start TvEvAPI-TEVT_StartAPI");
      return {KE_EVENT_NOT_SENT, false};
    }
    const StopAtEnd stop{api.Functions()};
    return {call(api.Functions(), event) ? KE_RESULT{KE_SUCCESS} : KE_RESULT{KE_EVENT_NOT_SENT}, true};
  }

  const char* function;
  std::optional<std::string> folder;  // none when the module directory is unknown
  siblings::EventApiScope api;
};

EventInfo EventOf(const char* product) {
  EventInfo event{};
  event.eventClass = kEventClass;
  event.product = product;
  return event;
}

bool TraceProductNotSent(const char* function, const char* product) {
  Trace(kDetail, function, "Could not send UnInstall Event asociated with product: [%s]", OrNullText(product));
  return false;
}

// Removes the agent's shutdown script at the end of the scope, also after an exception.
struct RemoveScriptAtEnd {
  ~RemoveScriptAtEnd() { policy::DeleteShutdownInformation(nullptr, L"PROT_AGENTVOSK_UPG_SCRIPT=\"1\"", L"", 1); }
};

// The descriptions are string resources of the prompt program.
KE_RESULT DescribeError(const char* function, std::uint32_t errorCode, const char* insert, char* buffer,
                        std::size_t size) {
  constexpr const char* kFile = siblings::kPromptProgram.file;
  const auto folder = win::FolderOf(siblings::kPromptProgram.folder);
  win::ModuleHandle module;
  siblings::SiblingSearch(function, kFile).Bind(folder ? folder->c_str() : nullptr, module, {}, nullptr);
  if (!module) {
    Trace(trace::kAlways, function, "Error loading %s%s", folder.value_or("").c_str(), kFile);
    return KE_MODULE_NOT_LOADED;
  }
  char resource[kDescriptionSize] = {};
  if (win::Passes(win::Call::kName)) LoadStringA(module.Get(), errorCode, resource, sizeof resource);
  if (*resource == '\0') {
    Trace(kDetail, function, "No description found for ErrorCode: [%i]", static_cast<int>(errorCode));
    return KE_EVENT_NOT_SENT;
  }
  text::CopyCut(DescriptionText(resource, insert ? insert : ""), buffer, size);
  return KE_SUCCESS;
}

}  // namespace

KE_RESULT SendScanState(const char* function, const char* product, const char* taskId, std::int32_t status) {
  const EventModule events(function);
  if (!events.api) return KE_EVENTS_UNAVAILABLE;
  SYSTEMTIME utc;
  GetSystemTime(&utc);
  char now[64];
  snprintf(now, sizeof now, "%.4i-%.2i-%.2i %.2i:%.2i:%.2i", utc.wYear, utc.wMonth, utc.wDay, utc.wHour, utc.wMinute,
           utc.wSecond);
  Trace(kDetail, function, "Fecha y Hora UTC: %s", now);
  EventInfo info = EventOf(product);
  info.text = now;
  const auto send = [&](const EventApiTable& functions, const EventInfo& event) {
    if (functions.TEVT_ScanState(&event, "Unknown", status, taskId) == 0) return true;
    Trace(kDetail, function, "Could not send State Event asociated with TaskId: [%s] and Status: [%i] to the Queue",
          OrNullText(taskId), static_cast<int>(status));
    return false;
  };
  return events.Send(info, send).result;
}

KE_RESULT SendRebootForced(const char* function, const char* product) {
  const EventModule events(function);
  if (!events.api) return KE_EVENTS_UNAVAILABLE;
  const auto send = [&](const EventApiTable& functions, const EventInfo& event) {
    return functions.TEVT_RebootForced(&event, "0") == 0 || TraceProductNotSent(function, product);
  };
  return events.Send(EventOf(product), send).result;
}

KE_RESULT ReportUninstallation(const char* function, const char* product) {
  const RemoveScriptAtEnd removal;
  siblings::ExecuteLocalProcessAction("KELUPG", kUpgradeAction, 0);
  const EventModule events(function);
  if (!events.api) return KE_EVENTS_UNAVAILABLE;
  const auto send = [&](const EventApiTable& functions, const EventInfo& event) {
    return functions.TEVT_Install(&event, kInstallFlag) == 0 || TraceProductNotSent(function, product);
  };
  const Sending sending = events.Send(EventOf(product), send);
  if (!sending.connected) return sending.result;
  Trace(kDetail, function, "Starting time out to send the event");
  win::Pause(kDeliveryMilliseconds);  // with the module still loaded
  Trace(kDetail, function, "Finishing time out to send the event");
  return sending.result;
}

KE_RESULT SendError(const char* function, std::uint32_t eventClass, std::uint32_t source, std::uint32_t errorCode,
                    const char* insert) {
  const EventModule events(function);
  if (!events.api) return KE_EVENTS_UNAVAILABLE;
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

KE_RESULT GetEventDescription(std::uint32_t errorCode, char* buffer, std::int32_t size, const char* insert) noexcept {
  return trace::ExportCall("KE_GetEventDescription", [&](trace::Export& self) -> KE_RESULT {
    if (buffer == nullptr) return KE_MISSING_ARGUMENT;
    if (size <= 0) return KE_BUFFER_TOO_SMALL;
    return DescribeError(self.name, errorCode, insert, buffer, static_cast<std::size_t>(size));
  });
}

KE_RESULT StartEventService(const char* function) {
  const siblings::LauncherRun run = siblings::RunLauncherCommand(function, "KELTVEVT", "KELTVEVT -start");
  if (run.exitCode != 0) siblings::TraceLauncherCommandFailed(function, "KELTVEVT", run.exitCode);
  const bool started = run.launcherBound && run.launcherResult == 0 && run.exitCode == 0;
  return started ? KE_SUCCESS : KE_EVENTS_UNAVAILABLE;
}

}  // namespace agent
