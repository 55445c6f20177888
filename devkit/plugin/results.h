// The results of the plug-ins' functions.
#pragma once

#include "KEResults.h"

namespace plugin {

enum Result : int {
  kSuccess = 0,
  kBadArgument = 1,                         // a null pointer, or a size smaller than the record
  kRefusedMode = 2,                         // not the mode that the plug-in accepts
  kNotInitialised = 3,                      // KE_Initialize has not succeeded, or KE_Finalize was called since
  kUnknownInfo = 4,                         // a code that is none of the kinds of information
  kBadSettings = 5,                         // the INI file holds a value that cannot be used
  kNotLogged = 6,                           // the log could not be written
  kNoProxy = KE_INSTALLER_PLUGIN_UNUSABLE,  // no proxy is set: KELUtils asks the agent module instead
};

}  // namespace plugin
