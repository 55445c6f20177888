// What the commands do to the jobs.
#pragma once

#include "zumat/command.h"
#include "zumat/job.h"
#include "zumat/results.h"

namespace zumat {

/// Carries a command out that adds, edits, deletes, activates or deactivates. The message tells what was done, or why
/// not; `jobs` is changed only on success. kNoSuchJob, kTooManyJobs.
Outcome Change(const Command& command, const Moment& moment, Jobs& jobs);

}  // namespace zumat
