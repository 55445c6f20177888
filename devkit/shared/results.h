// The results of the development siblings' functions, and the exit codes of the stand-in programs.
#pragma once

#include "KEResults.h"

namespace devkit {

enum Result : int {
  kSuccess = 0,
  kBadArgument = 1,      // a null pointer, an unusable text, or a size or number out of range
  kRefusedMode = 2,      // plug-in: another mode than the accepted one
  kNoComponent = 3,      // launcher: neither a program nor an action module of that name
  kNotLogged = 4,        // the log or the event file could not be written
  kBadSettings = 5,      // the INI file has a value that cannot be used
  kTooMany = 6,          // open logs or connections
  kNotSupported = 7,     // a function that KELUtils looks up and never calls
  kBadHandle = 8,        // log: not the handle of an open log
  kNotConfigured = 9,    // log: no such output
  kFileFailure = 10,     // a file could not be opened, read or written, or other processes kept it locked
  kDamaged = 11,         // record: the file has another form, and stays as it is
  kWrongSize = 12,       // record: stored in another size
  kBadCommand = 13,      // launcher: no component name at the beginning, or too long
  kNotInitialised = 14,  // no successful start, or as many ends as starts
  kNotStarted = 15,      // launcher: the program or module could not be started, or the module has no Do
  kNotEnded = 16,        // launcher: the program runs longer than the limit, and is left running
  kUnknownAction = 17,   // action module: logged, and nothing else
  kUnexpected = 18,      // an exception, such as no memory
  kNoProxy = KE_INSTALLER_PLUGIN_UNUSABLE,  // installer plug-in: KELUtils asks the agent module instead
};

}  // namespace devkit
