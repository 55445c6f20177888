// Reading a source file and replacing a target file.
#pragma once

#include <windows.h>

#include <cstddef>

#include "win/owner.h"

namespace sharedfile {

/// Opens an existing file for reading. Nobody can write to it meanwhile.
win::FileHandle OpenSource(const char* path) noexcept;

/// Reads until `size` bytes are there or the file ends; `length` receives how many came. False when reading failed.
bool ReadFully(const win::FileHandle& file, void* data, std::size_t size, std::size_t& length) noexcept;

/// A file that is written beside its target, under a name that no other process uses, and then replaces the target in
/// one step. It is deleted again unless it was put in place.
class Replacement {
 public:
  explicit Replacement(const char* target) noexcept;
  ~Replacement();
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  /// These give false when the file could not be created, written or put in place.
  bool Write(const void* data, std::size_t length) noexcept;
  bool PutInPlace() noexcept;

 private:
  char target_[MAX_PATH] = {};
  char path_[MAX_PATH] = {};  // empty: there is no file to put in place or to delete
  win::FileHandle file_;
};

}  // namespace sharedfile
