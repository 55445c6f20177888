// A job, and the moment at which something is asked of it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zumat/clauses.h"

namespace zumat {

inline constexpr std::size_t kMaximumJobs = 512;
inline constexpr std::size_t kMaximumProgram = 64;        // bytes
inline constexpr std::size_t kMaximumCommandText = 8192;  // bytes

/// Jobs that come without a task ID get the lowest free one from here on.
inline constexpr int kFirstOwnId = 1000001;

/// Texts are UTF-8.
struct Job {
  int id = 0;           // positive
  std::string program;  // which program of the agent runs it
  std::string command;  // what that program is given: a module and its arguments; may be empty
  Clauses clauses;
  bool active = true;
  Day since;      // the day on which the present clauses were given
  int start = 0;  // the picked first start of a day, from the clauses' startTime to startTimeEnd

  bool operator==(const Job&) const = default;
};

/// In the order of their task IDs, which are all different.
using Jobs = std::vector<Job>;

/// What the world has to say about a command: the local time, and a random number.
struct Moment {
  Minute now;
  std::uint32_t random = 0;
};

}  // namespace zumat
