// The text of the jobs file: JSON, which README.md describes.
#pragma once

#include <string>
#include <string_view>

#include "zumat/job.h"
#include "zumat/results.h"

namespace zumat {

inline constexpr std::size_t kMaximumJobsText = 4 * 1024 * 1024;  // bytes

std::string FormatJobs(const Jobs& jobs);

/// kDamaged, with `jobs` unchanged, when the text is not what FormatJobs writes or breaks a bound.
Outcome ReadJobs(std::string_view text, Jobs& jobs);

}  // namespace zumat
