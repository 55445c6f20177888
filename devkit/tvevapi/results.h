// The results of this module's functions.
#pragma once

namespace tvevapi {

/// Zero is success, as TvEvAPI.h asks for; the other numbers are this module's own.
enum Result : int {
  kSuccess = 0,
  kBadArgument = 1,         // no event record
  kNotConnected = 2,        // an event or a stop without a start before it
  kNotOffered = 3,          // a function that this module only has the name of
  kNotRecorded = 4,         // the line could not be written: what was asked for has not happened
  kTooManyConnections = 5,  // more starts without a stop than this module counts
};

}  // namespace tvevapi
