// What -list shows. Texts are UTF-8.
#pragma once

#include <string>

#include "zumat/job.h"

namespace zumat {

/// A table for people, a line for each job.
std::string RenderTable(const Jobs& jobs, Minute now);

/// The same for programs, as JSON, which README.md describes.
std::string RenderJson(const Jobs& jobs, Minute now);

}  // namespace zumat
