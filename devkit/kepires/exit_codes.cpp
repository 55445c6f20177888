#include "kepires/exit_codes.h"

namespace kepires {

const char* MeaningOf(ExitCode code) noexcept {
  switch (code) {
    case kYes:
      return "yes, or done";
    case kNo:
      return "no";
    case kLater:
      return "later";
    case kUnknownSwitch:
      return "unknown switch";
    case kBadNumber:
      return "a number is missing or out of range";
    case kRepeatedSwitch:
      return "a switch is there twice";
    case kNoKind:
      return "no -MsgType";
    case kNoDialog:
      return "the dialog could not be shown";
    case kNoEvent:
      return "the event could not be made";
    case kTimeOut:
      return "the event was not set in time";
    case kBadSetting:
      return "a setting is no number of its range";
  }
  return "unknown";
}

}  // namespace kepires
