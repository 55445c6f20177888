// When a job starts, and which program. No call of Windows.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "zumat/jobs.h"

namespace zumat {

/// The first start later than the minute `now`, whether the job is active or not. None for jobs of a boot, for a single
/// start in the past, and for a start after the year 9999.
std::optional<Minute> NextStart(const Job& job, Minute now);

/// The next step for a job.
enum class Step {
  kWait,   // nothing yet
  kStart,  // its time has come, or was missed
  kSkip,   // its time has come, but it still runs, or has run within its window
};

/// The step at the moment `now`, for a scheduler that was started at `boot`. Several missed starts are one step. After
/// kStart and kSkip the caller sets `handled` to `now`.
Step StepOf(const Job& job, bool isRunning, Second boot, Second now);

/// Prepares the jobs for a boot: those of the next boot are due after their delay, unless they were started before.
void ArmForBoot(Jobs& jobs);

/// The full path of a program: that of its line NAME=e"PATH" in the text of tokens.tok, whose names have any letter
/// case. Empty when no line names it with a full path.
std::string FindProgram(std::string_view tokens, std::string_view program);

}  // namespace zumat
