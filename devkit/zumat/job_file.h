// The jobs file on disk, which processes share.
#pragma once

#include <string>

#include "shared/files.h"
#include "zumat/jobs.h"

namespace zumat {

/// The time of the local clock.
Second LocalTime() noexcept;

/// The failed attempt, with the number and the text of the last error.
Outcome FileFailure(const std::string& attempt);

/// The jobs file of a folder, locked among processes for the scope. Paths are in the system's code page.
class JobFile {
 public:
  /// Waits so many milliseconds for the lock.
  JobFile(const std::string& folder, DWORD milliseconds);

  /// A missing file holds no jobs. kBusy, kDamaged, kFileFailure.
  Outcome Read(Jobs& jobs) const;

  /// Replaces the file, or leaves it as it is; creates a missing folder. kTooManyJobs, kFileFailure.
  Outcome Write(const Jobs& jobs) const;

 private:
  const std::string folder_;
  const std::string path_;
  const devkit::SharedFileLock lock_;
};

}  // namespace zumat
