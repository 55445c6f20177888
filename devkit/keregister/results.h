// The results of this module's function.
#pragma once

namespace keregister {

enum Result : int {
  kSuccess = 0,
  kNotLogged = 1,  // the log could not be written
};

}  // namespace keregister
