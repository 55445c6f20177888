// The one way of an event: bind the event module, open a connection, make one event call, close the connection, free
// the module.
#pragma once

#include <cstddef>
#include <cstdint>

#include "KEResults.h"
#include "siblings/modules.h"

namespace agent {

static_assert(sizeof(EventInfo) == 24 && offsetof(EventInfo, eventClass) == 0 && offsetof(EventInfo, computer) == 4 &&
              offsetof(EventInfo, product) == 8 && offsetof(EventInfo, extra) == 12 &&
              offsetof(EventInfo, text) == 16 && offsetof(EventInfo, description) == 20);

/// What came of sending an event.
struct Sending {
  KE_RESULT result;  // KE_SUCCESS, or KE_EVENT_NOT_SENT
  bool connected;    // whether there was a connection; it is closed again
};

/// The event module, bound for the length of one export.
class EventConnection {
 public:
  /// Binds the module; one that cannot be bound is traced under `function`.
  explicit EventConnection(const char* function);

  /// True when the module is bound; only then may events be sent.
  explicit operator bool() const noexcept { return static_cast<bool>(module_); }

  /// Opens a connection, has `call(functions, event)` make the event call, and closes the connection, also when the
  /// call ends in an exception. The event that `call` is given has the name of the computer. `call` answers whether the
  /// event was queued, and traces when it was not; a connection that cannot be opened is traced here.
  template <typename Call>
  Sending Send(EventInfo event, Call call) const {
    return Send(
        event,
        [](const siblings::EventApiTable& functions, const EventInfo& completed, void* context) -> bool {
          return (*static_cast<Call*>(context))(functions, completed);
        },
        &call);
  }

 private:
  using EventCall = bool (*)(const siblings::EventApiTable& functions, const EventInfo& event, void* context);

  Sending Send(EventInfo event, EventCall call, void* context) const;

  const char* function_;
  siblings::EventApiScope module_;
};

// The descriptions of the agent's errors: string resources of the prompt program.

/// Puts the description of the error, with `insert` (which may be null) in it, into a buffer of `size` bytes, which is
/// not 0, cut to what fits; after a failure the buffer stays as it was.
///
/// KE_MODULE_NOT_LOADED when KePIRes.exe cannot be loaded, KE_EVENT_NOT_SENT when it has no such text; both are traced
/// under `function`.
KE_RESULT DescribeError(const char* function, std::uint32_t errorCode, const char* insert, char* buffer,
                        std::size_t size);

/// KE_GetEventDescription(), under its trace name.
KE_RESULT GetEventDescription(std::uint32_t errorCode, char* buffer, std::int32_t size, const char* insert) noexcept;

// The events of the agent. Each function sends one, and traces under `function` what goes wrong. Texts may be null.
//
// KE_EVENTS_UNAVAILABLE when the event module cannot be bound, KE_EVENT_NOT_SENT when it refuses the connection or the
// event.

/// The state of a scan, with the time of day.
KE_RESULT SendScanState(const char* function, const char* product, const char* taskId, std::int32_t status);

/// A forced restart.
KE_RESULT SendRebootForced(const char* function, const char* product);

/// The end of the agent: lets the upgrade module act, sends the event, waits 30 seconds when there was a connection,
/// and removes the agent's shutdown script on every path.
KE_RESULT ReportUninstallation(const char* function, const char* product);

/// An error of the agent with its description. Without one nothing is sent, and the result is that of
/// KE_GetEventDescription.
KE_RESULT SendError(const char* function, std::uint32_t eventClass, std::uint32_t source, std::uint32_t errorCode,
                    const char* insert);

}  // namespace agent
