// The results of this module's functions.
#pragma once

#include <cstdint>
#include <optional>

namespace kelmnapi {

enum Result : int {
  kSuccess = 0,      // the component ran; its exit code is with the caller
  kBadArgument = 1,  // a null pointer
  kBadCommand = 2,   // no component name at the beginning, or more than 8191 characters
  kNoComponent = 3,  // there is neither a program nor an action module of that name
  kNotStarted = 4,   // the program could not be started, or the action module not be loaded, or it has no Do
  kNotEnded = 5,     // the program did not end in time and was left running, or its exit code could not be read
  kNotSupported = 6,
  kBadSettings = 7,  // the INI file holds a value that cannot be used
  kFailure = 8,      // an exception was caught inside, such as memory running out
};

/// What a call came to. The result is a Result, or the number that a script asks for.
struct Outcome {
  int result = kSuccess;
  std::optional<std::int32_t> exitCode;  // none: the caller's stays as it was
};

}  // namespace kelmnapi
