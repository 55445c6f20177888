// The jobs, and the changes that commands make.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zumat/clauses.h"
#include "zumat/command.h"
#include "zumat/results.h"

namespace zumat {

inline constexpr std::size_t kMaximumJobs = 512;
inline constexpr std::size_t kMaximumProgram = 64;        // bytes
inline constexpr std::size_t kMaximumCommandText = 8192;  // bytes
inline constexpr std::size_t kMaximumError = 512;         // bytes

/// Jobs that come without a task ID get the lowest free one from here on.
inline constexpr int kFirstOwnId = 1000001;

/// Texts are UTF-8.
struct Job {
  int id = 0;           // positive
  std::string program;  // the program's name in tokens.tok
  std::string command;  // its arguments: a module and the module's arguments; may be empty
  Clauses clauses;
  bool active = true;
  Day since;         // the day on which the present clauses were given
  int start = 0;     // the picked first start of a day, from the clauses' startTime to startTimeEnd
  Second handled{};  // starts up to this moment are over: done, skipped, or earlier than the clauses

  // Of the scheduler that runs.
  bool armed = false;                     // kNextBoot: its boot has come
  std::optional<Second> lastStart;        // of the last process that was started
  std::optional<std::uint32_t> exitCode;  // of that process; none while it runs, and when it is unknown
  std::string error;                      // why there is no exit code, or why the last start failed
  std::uint32_t process = 0;              // the process that runs; 0 for none
  std::uint64_t created = 0;              // its creation time: another process may get the same number later

  bool operator==(const Job&) const = default;
};

/// In the order of their task IDs, which are all different.
using Jobs = std::vector<Job>;

/// The job with a task ID, or null.
Job* FindJob(int id, Jobs& jobs);

/// The local time, and a random number.
struct Moment {
  Second now;
  std::uint32_t random = 0;
};

/// Carries out a command that adds, edits, deletes, activates or deactivates. The message names the change, or the
/// reason for none; `jobs` is changed only on success. kNoSuchJob, kTooManyJobs.
Outcome Change(const Command& command, const Moment& moment, Jobs& jobs);

}  // namespace zumat
