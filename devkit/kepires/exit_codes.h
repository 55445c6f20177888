// What this program ends with.
#pragma once

namespace kepires {

/// 0, 1 and 2 are answers; the other codes are failures, whose meaning is in the log.
enum ExitCode : int {
  kYes = 0,  // also: the countdown is over, the installation dialog was closed
  kNo = 1,
  kLater = 2,
  kUnknownSwitch = 3,   // the command line holds a word that is no switch of this program
  kBadNumber = 4,       // the number of a switch is missing or no number of its range
  kRepeatedSwitch = 5,  // a switch is there twice
  kNoKind = 6,          // there is no -MsgType
  kNoDialog = 7,        // the dialog could not be shown, for example without a display
  kNoEvent = 8,         // the event that closes the installation dialog could not be made
  kTimeOut = 9,         // in automatic mode: the event was not set in time
  kBadSetting = 10,     // KePIRes.ini holds something else than a number of the range
};

/// A few words for the log.
const char* MeaningOf(ExitCode code) noexcept;

}  // namespace kepires
