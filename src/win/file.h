// Whole-file work on paths in the system's code page. No function throws unless it says so; each leaves the reason of a
// failure in the last-error value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "win/owner.h"

namespace win {

/// Size and times of a file; times in the platform's 100-nanosecond units since 1601. All zero when the file is
/// missing.
struct FileStatus {
  bool exists = false;
  std::uint64_t size = 0;
  std::uint64_t created = 0;
  std::uint64_t accessed = 0;
  std::uint64_t written = 0;
};

FileStatus StatusOf(const std::string& path) noexcept;

/// True when a file or folder of that name exists.
bool Exists(const std::string& path) noexcept;

/// Creates a folder in an existing one. One that exists, and one that cannot be created, changes nothing.
void MakeFolder(const std::string& path) noexcept;

/// Opens an existing file for reading and writing, as the C mode "r+b" does: others may read and write meanwhile.
FileHandle OpenForUpdate(const std::string& path) noexcept;

/// Opens an existing file for reading, whatever others do with it.
FileHandle OpenForReading(const std::string& path) noexcept;

/// Opens a file for reading and writing and empties it, creating it when missing, as the C mode "w+b" does. Works on
/// hidden files too, and keeps their attributes.
FileHandle CreateForUpdate(const std::string& path) noexcept;

/// Creates the file empty when it is missing, and never touches one that exists meanwhile; true when there is a file
/// that can be opened for update.
bool CreateMissing(const std::string& path) noexcept;

/// Size in bytes, or none when it cannot be told.
std::optional<std::uint64_t> SizeOf(const FileHandle& file) noexcept;

/// Reads up to `size` bytes from the file's position and returns how many came.
std::size_t Read(const FileHandle& file, void* data, std::size_t size) noexcept;

/// Writes `size` bytes at the file's position and returns how many went out.
std::size_t Write(const FileHandle& file, const void* data, std::size_t size) noexcept;

/// Hands what was written to the disk; true on success.
bool Flush(const FileHandle& file) noexcept;

/// Copies a file over another one, replacing it; true on success. The copy is writable even when its source is
/// read-only.
bool CopyOver(const std::string& source, const std::string& target) noexcept;

}  // namespace win
