// When a job starts next.
#pragma once

#include <optional>

#include "zumat/job.h"

namespace zumat {

/// The first start later than the minute `now`, whether the job is active or not. None for jobs of a boot, for a single
/// start that is past, and for a start after the year 9999.
std::optional<Minute> NextStart(const Job& job, Minute now);

}  // namespace zumat
