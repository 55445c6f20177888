// The exit codes of zumat.exe.
#pragma once

#include <cstdint>
#include <string>

namespace zumat {

enum Result : std::uint32_t {
  kSuccess = 0,

  // The command was not understood; nothing was changed.
  kNoCommand = 1,      // the command has no action
  kBadQuotes = 2,      // a double quote is missing or out of place
  kUnknownSwitch = 3,  // a word is not a switch of this program
  kBadValue = 4,       // the value of a switch is malformed or out of range
  kRepeated = 5,       // a switch is there twice
  kMissing = 6,        // a required switch is missing
  kClash = 7,          // switches that do not go together

  // The command could not be carried out; nothing was changed.
  kNoSuchJob = 10,       // no job has the task ID
  kTooManyJobs = 11,     // the jobs file would hold too many jobs, or too many bytes
  kBusy = 12,            // another process kept the jobs file locked, or did not end
  kDamaged = 13,         // the jobs file cannot be understood; it is kept as it is
  kFileFailure = 14,     // the folder or a file of it cannot be used
  kUnexpected = 15,      // an exception, such as no memory
  kAlreadyRunning = 16,  // another scheduler runs on these jobs
};

/// A result with its message: one line for a failure.
struct Outcome {
  Result result = kSuccess;
  std::string message;

  bool Succeeded() const noexcept { return result == kSuccess; }
};

}  // namespace zumat
