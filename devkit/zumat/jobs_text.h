// The jobs as texts of UTF-8: the jobs file, and the output of -list.
#pragma once

#include <string>
#include <string_view>

#include "zumat/jobs.h"
#include "zumat/results.h"

namespace zumat {

inline constexpr std::size_t kMaximumJobsText = 4 * 1024 * 1024;  // bytes

std::string FormatJobs(const Jobs& jobs);

/// kDamaged, with `jobs` unchanged, when FormatJobs does not write such a text, or a bound is broken.
Outcome ReadJobs(std::string_view text, Jobs& jobs);

/// A table for people, a line for each job.
std::string RenderTable(const Jobs& jobs, Second now);

/// The same for programs, as JSON.
std::string RenderJson(const Jobs& jobs, Second now);

}  // namespace zumat
