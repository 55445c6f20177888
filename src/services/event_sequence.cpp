#include "services/event_sequence.h"

#include <string>

#include "frame/module.h"
#include "frame/paths.h"
#include "frame/text.h"
#include "frame/trace.h"

namespace services {
namespace {

using frame::kDetail;

frame::EventApiScope BindModule() {
  return frame::EventApiScope(frame::SiblingFolder(frame::GetModuleDirectory(), "KELTVEVT").c_str());
}

/// The name of this computer for an event record.
class ComputerName {
 public:
  explicit ComputerName(const char* function) {
    DWORD size = sizeof text_;
    if (GetComputerNameA(text_, &size)) return;
    Trace(kDetail, function, "Could not get computer name");
    frame::CopyCut("UnKnownMachine", text_, sizeof text_);
  }
  const char* Text() const noexcept { return text_; }

 private:
  char text_[512] = {};
};

/// Closes an opened connection at the end of the scope.
struct StopAtEnd {
  ~StopAtEnd() { functions.TEVT_StopAPI(); }
  const frame::EventApiTable& functions;
};

}  // namespace

EventSequence::EventSequence(const char* function) : function_(function), module_(BindModule()) {
  if (!module_) Trace(frame::kAlways, function, "Could not load TvEvAPI");
}

Sending EventSequence::Send(EventInfo& event, EventCall call, void* context) const {
  const ComputerName computer(function_);
  event.computer = computer.Text();
  const frame::EventApiTable& functions = module_.Functions();
  if (functions.TEVT_StartAPI() != 0) {
    Trace(kDetail, function_, "Failed to start TvEvAPI-TEVT_StartAPI");
    return {KE_EVENT_NOT_SENT, false};
  }
  const StopAtEnd stop{functions};
  return {call(functions, event, context) ? KE_RESULT{KE_SUCCESS} : KE_RESULT{KE_EVENT_NOT_SENT}, true};
}

}  // namespace services
