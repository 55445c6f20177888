// The results of this module's functions.
#pragma once

#include <cstdint>

namespace kelagapi {

enum Result : std::uint32_t {
  kSuccess = 0,
  kBadArgument = 1,     // a null record, or a size of 0 or of more than 64 KB
  kWrongSize = 2,       // the stored record has another size; or that of the proxy record is another one
  kDamaged = 3,         // the record's file is not what this module wrote; it stays as it is
  kFileFailure = 4,     // the record's file could not be opened, read, written or put in place, or no turn at it came
  kNoMemory = 5,        // memory ran out
  kNotInitialised = 6,  // KE_AGAPI_Initialize was not called, or as often as KE_AGAPI_Finalize
  kNotSupported = 7,    // a function of messages, which this module does not offer
};

}  // namespace kelagapi
