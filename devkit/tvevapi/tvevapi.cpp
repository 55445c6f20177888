// TvEvAPI.dll: the exported functions. No function throws, and each keeps the caller's last-error value.
#include "TvEvAPI.h"

#include "tvevapi/call_record.h"
#include "tvevapi/connections.h"
#include "tvevapi/results.h"
#include "win/owner.h"

namespace tvevapi {
namespace {

static_assert(sizeof(EventInfo) == 24, "the record crosses module borders");

Connections connections;

/// The common part of the event calls. `addMembers` adds the call's own arguments to its line.
template <typename AddMembers>
int Event(const char* name, const EventInfo* info, AddMembers addMembers) noexcept {
  const win::KeptLastError kept;
  CallRecord record(name);
  record.Add(info);
  addMembers(record);
  if (const int failure = FailureSetFor(name); failure != 0) return record.Write(failure);
  if (!connections.IsOpen()) return record.Write(kNotConnected);
  return record.Write(info == nullptr ? kBadArgument : kSuccess);
}

/// A function whose parameters nobody has told this module.
int Refuse(const char* name) noexcept {
  const win::KeptLastError kept;
  const int failure = FailureSetFor(name);
  return CallRecord(name).Write(failure != 0 ? failure : kNotOffered);
}

/// A connection is open only when its start is on record.
int Start(const char* name) noexcept {
  const win::KeptLastError kept;
  CallRecord record(name);
  if (const int failure = FailureSetFor(name); failure != 0) return record.Write(failure);
  if (!connections.Open()) return record.Write(kTooManyConnections);
  const int result = record.Write(kSuccess);
  if (result != kSuccess) connections.Close();
  return result;
}

/// Whatever the result, a connection that was open is closed.
int Stop(const char* name) noexcept {
  const win::KeptLastError kept;
  const bool closed = connections.Close();
  const int failure = FailureSetFor(name);
  return CallRecord(name).Write(failure != 0 ? failure : closed ? kSuccess : kNotConnected);
}

}  // namespace
}  // namespace tvevapi

using tvevapi::CallRecord;

extern "C" {

int KE_SIBLING_CALL TEVT_StartAPI(void) { return tvevapi::Start(__func__); }

int KE_SIBLING_CALL TEVT_StopAPI(void) { return tvevapi::Stop(__func__); }

int KE_SIBLING_CALL TEVT_ScanState(const EventInfo* info, const char* text, int32_t status, const char* taskId) {
  return tvevapi::Event(__func__, info, [&](CallRecord& record) {
    record.Add("argument", text);
    record.Add("status", status);
    record.Add("taskId", taskId);
  });
}

int KE_SIBLING_CALL TEVT_RebootForced(const EventInfo* info, const char* text) {
  return tvevapi::Event(__func__, info, [&](CallRecord& record) { record.Add("argument", text); });
}

int KE_SIBLING_CALL TEVT_Install(const EventInfo* info, int32_t flag) {
  return tvevapi::Event(__func__, info, [&](CallRecord& record) { record.Add("flag", flag); });
}

int KE_SIBLING_CALL TEVT_ErrorEvent(const EventInfo* info, uint32_t source, const char* identifier) {
  return tvevapi::Event(__func__, info, [&](CallRecord& record) {
    record.Add("source", source);
    record.Add("identifier", identifier);
  });
}

// Plain C functions: arguments that they do not know of are the caller's to clean up.
#define TVEVAPI_REFUSED(name) \
  int KE_SIBLING_CALL name(void) { return tvevapi::Refuse(#name); }
TVEVAPI_REFUSED(TEVT_ProtectionState)
TVEVAPI_REFUSED(TEVT_InternetUpdate)
TVEVAPI_REFUSED(TEVT_Update)
TVEVAPI_REFUSED(TEVT_Upgrade)
TVEVAPI_REFUSED(TEVT_Replicate)
TVEVAPI_REFUSED(TEVT_ConfigurationChange)
TVEVAPI_REFUSED(TEVT_ServiceState)
TVEVAPI_REFUSED(TEVT_NeedRestart)
TVEVAPI_REFUSED(TEVT_QuarantineInformation)
TVEVAPI_REFUSED(TEVT_MalwareDetection)
TVEVAPI_REFUSED(TEVT_WarningEvent)
TVEVAPI_REFUSED(TEVT_InformationEvent)

}  // extern "C"
