// The actions of this module and its results.
#pragma once

#include <cstdint>

namespace kelupg {

enum Action : std::uint32_t {
  kVersionChanged = 1,  // the version of the agent has changed
  kUninstall = 2,       // the agent is about to be uninstalled
};

enum Result : std::uint32_t {
  kSuccess = 0,
  kUnknownAction = 1,  // the first argument is no Action; it is logged all the same
  kNotLogged = 2,      // the log could not be written
};

}  // namespace kelupg
