// The scheduler that stays: starts the jobs at their time.
#pragma once

#include <string>

#include "zumat/jobs.h"

namespace zumat {

/// Starts the jobs of a folder until -stop, Ctrl+C or the end of the time that the command sets. kAlreadyRunning, and
/// the codes of the jobs file, which is kept.
Outcome RunScheduler(const std::string& folder, const Command& command);

/// Ends the scheduler of a folder and waits for its end. kSuccess, also when none runs; kBusy when it does not end.
Outcome StopScheduler(const std::string& folder);

/// Prints a line of UTF-8, and logs it. Neither failure matters.
void Report(const std::string& line);

}  // namespace zumat
