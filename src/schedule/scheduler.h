// Running the scheduler: a program that keeps the jobs and is told about them by command lines.
#pragma once

#include <string>

#include "KELUtils.h"

namespace schedule {

/// Runs one scheduler command: its first word names the program, which is looked for in the folder Scheduler beside the
/// module directory and then in the module directory. Waits up to 90 seconds for its end; one that takes longer is left
/// running. The command line is cut at 8198 characters. Traces its start and end; opens its own trace scope.
///
///   KE_MISSING_ARGUMENT       the command is empty
///   KE_BAD_SCHEDULER_COMMAND  there is no blank in it
///   KE_SCHEDULER_NOT_STARTED  the program is in neither place or cannot be started, or the module directory is unknown
///   KE_SCHEDULER_TIMEOUT      it has not ended in time
///   KE_SCHEDULER_FAILED       its exit code is not 0
///   KE_EXCEPTION              an exception was caught, so that an operation goes on with its next command
KE_RESULT CallZumAT(const std::string& command) noexcept;

}  // namespace schedule
