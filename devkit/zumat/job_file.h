// The file of the jobs on disk, which processes share.
#pragma once

#include <string>

#include "win/owner.h"
#include "zumat/job.h"
#include "zumat/results.h"

namespace zumat {

/// The jobs file of a folder. Between `Lock` and the end of the object no other process that does the same reads or
/// writes it. Paths are in the system's code page.
class JobFile {
 public:
  explicit JobFile(const std::string& folder);
  ~JobFile();
  JobFile(const JobFile&) = delete;
  JobFile& operator=(const JobFile&) = delete;

  /// Waits for its turn, for a limited time; creates the folder when it is missing. kBusy, kFileFailure.
  Outcome Lock();

  /// Needs the lock. A missing file holds no jobs. kDamaged, kFileFailure.
  Outcome Read(Jobs& jobs) const;

  /// Needs the lock. The file is replaced in one step by one that is on the disk, or stays as it is: kTooManyJobs,
  /// kFileFailure.
  Outcome Write(const Jobs& jobs) const;

 private:
  std::string folder_;
  std::string path_;
  win::FileHandle lock_;
  bool locked_ = false;
};

}  // namespace zumat
