// The one way of an event: bind the event module, open a connection, make one event call, close the connection, free
// the module.
#pragma once

#include <cstddef>

#include "KELUtils.h"
#include "frame/event_api.h"

namespace services {

static_assert(sizeof(EventInfo) == 24 && offsetof(EventInfo, eventClass) == 0 && offsetof(EventInfo, computer) == 4 &&
              offsetof(EventInfo, product) == 8 && offsetof(EventInfo, extra) == 12 &&
              offsetof(EventInfo, text) == 16 && offsetof(EventInfo, description) == 20);

/// What came of sending an event.
struct Sending {
  KE_RESULT result;  // KE_SUCCESS, or KE_EVENT_NOT_SENT
  bool connected;    // whether there was a connection; it is closed again
};

/// The event module, bound for the length of one export.
class EventSequence {
 public:
  /// Binds the module; one that cannot be bound is traced under `function`.
  explicit EventSequence(const char* function);

  /// True when the module is bound; only then may events be sent.
  explicit operator bool() const noexcept { return static_cast<bool>(module_); }

  /// Opens a connection, has `call(functions, event)` make the event call, and closes the connection, also when the
  /// call ends in an exception. The event that `call` is given has the name of the computer. `call` answers whether the
  /// event was queued, and traces when it was not; a connection that cannot be opened is traced here.
  template <typename Call>
  Sending Send(EventInfo event, Call call) const {
    return Send(
        event,
        [](const frame::EventApiTable& functions, const EventInfo& completed, void* context) -> bool {
          return (*static_cast<Call*>(context))(functions, completed);
        },
        &call);
  }

 private:
  using EventCall = bool (*)(const frame::EventApiTable& functions, const EventInfo& event, void* context);

  Sending Send(EventInfo& event, EventCall call, void* context) const;

  const char* function_;
  frame::EventApiScope module_;
};

}  // namespace services
