// Whole-file work on paths in the system's code page. No function throws unless it says so; each leaves the reason of a
// failure in the last-error value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "win/owner.h"

namespace win {

/// The kinds of file calls, as a gate sees them.
enum class FileCall { kStatus, kOpen, kSize, kResize, kRead, kWrite, kFlush, kTime, kMove, kDelete };

/// Asked before each file call of this header, on the calling thread. False keeps the call from the platform and makes
/// it fail, with the last-error value that the gate has set. `bytes` is what one step of reading or writing moves; the
/// gate may make it less.
using FileGate = bool (*)(FileCall call, unsigned long& bytes);

/// Null in the product. Tests put a gate of their own here, to count, to fail or to end the process at any call;
/// nothing else changes it.
extern FileGate g_fileGate;

/// Attributes, size and times of a file; times in the platform's 100-nanosecond units since 1601. All zero when the
/// file is missing.
struct FileStatus {
  bool exists = false;
  unsigned long attributes = 0;
  std::uint64_t size = 0;
  std::uint64_t created = 0;
  std::uint64_t accessed = 0;
  std::uint64_t written = 0;
};

FileStatus StatusOf(const std::string& path) noexcept;

/// True when the last-error value, left by a failed call of this header, says that there is no such file or folder.
bool WasMissing() noexcept;

/// The clock of the file times.
std::uint64_t Now() noexcept;

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

/// Opens a file as it is for reading and writing, creating it empty when it is missing. After a success the last-error
/// value is ERROR_ALREADY_EXISTS for one that was there.
FileHandle OpenOrCreate(const std::string& path) noexcept;

/// Creates a file that is to take the place of `target`: empty, held by this caller alone, with the given attributes
/// and, where the target exists, its access rights. One of that name, left by a process that was killed, is removed.
FileHandle CreateReplacement(const std::string& path, const std::string& target, unsigned long attributes) noexcept;

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

/// Cuts the file, or grows it by zero bytes, and goes back to its beginning; true on success.
bool Resize(const FileHandle& file, std::uint64_t size) noexcept;

/// Sets the last-write time; true on success.
bool SetWritten(const FileHandle& file, std::uint64_t time) noexcept;

/// Gives a file the name `target` in one step, replacing the file of that name: whoever opens `target` finds the one or
/// the other. Returns when the disk has it. False when anything is open elsewhere.
bool PutInPlace(const std::string& path, const std::string& target) noexcept;

void Remove(const std::string& path) noexcept;

}  // namespace win
