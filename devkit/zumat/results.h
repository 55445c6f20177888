// The exit codes of zumat.exe.
#pragma once

#include <cstdint>
#include <string>

namespace zumat {

enum Result : std::uint32_t {
  kSuccess = 0,

  // The command was not understood; nothing was changed.
  kNoCommand = 1,      // the command does not say what to do
  kBadQuotes = 2,      // a double quote is missing or stands where none belongs
  kUnknownSwitch = 3,  // a word that is no switch of this program
  kBadValue = 4,       // the value of a switch is malformed or out of range
  kRepeated = 5,       // a switch is there twice
  kMissing = 6,        // a switch that the command needs is not there
  kClash = 7,          // switches that do not go together

  // The command could not be carried out; nothing was changed.
  kNoSuchJob = 10,    // no job has the task ID
  kTooManyJobs = 11,  // the jobs file would hold too many jobs, or too many bytes
  kBusy = 12,         // other processes held the jobs file for too long
  kDamaged = 13,      // the jobs file cannot be understood; it is kept as it is
  kFileFailure = 14,  // the folder or a file of it cannot be used
  kUnexpected = 15,   // a failure that has no code, such as memory that ran out
};

/// A result with the line that tells about it.
struct Outcome {
  Result result = kSuccess;
  std::string message;

  bool Succeeded() const noexcept { return result == kSuccess; }
};

}  // namespace zumat
