// Files: their content, status and access rights.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "win/owner.h"

namespace win {

/// The discretionary access list of a file or folder.
class AccessRights {
 public:
  AccessRights() noexcept = default;
  AccessRights(const AccessRights&) = delete;  // the attributes point to the block
  AccessRights& operator=(const AccessRights&) = delete;

  /// False, with the last-error value set, when the rights cannot be read.
  bool Read(const std::string& path) noexcept;
  bool Read(const std::wstring& path) noexcept;

  /// Restricts the rights to accounts that may write the file, or create files in the folder: they may read and write,
  /// no other account may open it. False, with the last-error value set, on failure.
  bool KeepWriters() noexcept;

  /// The attributes for the creation of a file with these rights; null, for the rights that its folder gives it, when
  /// none were read. The new file gets no further rights from its folder.
  SECURITY_ATTRIBUTES* ForNewFile() noexcept;

  /// Lets a file created with `ForNewFile` follow later changes of its folder's rights, if the original does. The
  /// handle needs WRITE_DAC. False, with the last-error value set, when that fails.
  bool RestoreInheritance(const FileHandle& file) noexcept;

 private:
  template <typename Path>
  bool ReadOf(const Path& path) noexcept;
  SECURITY_DESCRIPTOR_CONTROL& Control() noexcept {
    return reinterpret_cast<SECURITY_DESCRIPTOR_RELATIVE*>(block_.get())->Control;
  }

  std::unique_ptr<char[]> block_;  // a self-relative security descriptor; null before it was read
  SECURITY_ATTRIBUTES attributes_{
      .nLength = sizeof attributes_, .lpSecurityDescriptor = nullptr, .bInheritHandle = FALSE};
  bool inherits_ = false;
};

// File calls on paths in the system's code page, or in UTF-16. Each passes the gate. No function throws; a failure
// leaves its reason in the last-error value.

/// Attributes, size and times of a file; times in Windows' 100-nanosecond units since 1601. All zero when the
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
FileStatus StatusOf(const std::wstring& path) noexcept;

/// True when the last-error value says that a file or folder does not exist.
bool LastErrorIsNotFound() noexcept;

/// The clock of the file times.
std::uint64_t Now() noexcept;

/// True when a file or folder of that name exists.
bool Exists(const std::string& path) noexcept;

/// Creates a folder in an existing one. Errors are ignored.
void MakeFolder(const std::string& path) noexcept;

/// Opens an existing file for reading and writing, as the C mode "r+b" does. Others may read, write, replace and delete
/// it meanwhile.
FileHandle OpenForUpdate(const std::string& path) noexcept;

/// Opens an existing file for reading. Others may do anything with it meanwhile.
FileHandle OpenForReading(const std::string& path) noexcept;
FileHandle OpenForReading(const std::wstring& path) noexcept;

/// Opens a file for reading and writing and empties it, creating it when missing, as the C mode "w+b" does. Works on
/// hidden files too, and keeps their attributes.
FileHandle CreateForUpdate(const std::string& path) noexcept;

/// Opens a file for reading and writing, creating it empty, with the rights of `security`, when it is missing. After a
/// success the last-error value is ERROR_ALREADY_EXISTS if the file existed.
FileHandle OpenOrCreate(const std::string& path, SECURITY_ATTRIBUTES* security = nullptr) noexcept;
FileHandle OpenOrCreate(const std::wstring& path) noexcept;

/// Creates the empty file `path`, which is to replace `target`, with the given attributes and the access rights of the
/// target, or of its folder when the target is missing. Fails with ERROR_FILE_EXISTS when `path` exists, and when the
/// target's rights cannot be read or set.
///
/// Others may open, rename and delete the file while the handle is open; `RemoveUnused` skips it.
FileHandle CreateReplacement(const std::string& path, const std::string& target, unsigned long attributes) noexcept;
FileHandle CreateReplacement(const std::wstring& path, const std::wstring& target, unsigned long attributes) noexcept;

/// Creates the file empty when it is missing; never changes an existing file. True when the file can be opened for
/// update.
bool CreateMissing(const std::string& path) noexcept;

/// Size in bytes; none on failure.
std::optional<std::uint64_t> SizeOf(const FileHandle& file) noexcept;

/// Reads up to `size` bytes from the file's position; returns the number of bytes read.
std::size_t Read(const FileHandle& file, void* data, std::size_t size) noexcept;

/// Writes `size` bytes at the file's position; returns the number of bytes written.
std::size_t Write(const FileHandle& file, const void* data, std::size_t size) noexcept;

/// Flushes the file to the disk; true on success.
bool Flush(const FileHandle& file) noexcept;

/// Truncates the file, or extends it with zero bytes, and seeks to its beginning; true on success.
bool Resize(const FileHandle& file, std::uint64_t size) noexcept;

/// Sets the last-write time; true on success.
bool SetWritten(const FileHandle& file, std::uint64_t time) noexcept;

/// Renames a file to `target` atomically, replacing the file of that name, and flushes the rename to the disk. Fails
/// while another process holds `target` open.
bool RenameOver(const std::string& path, const std::string& target) noexcept;
bool RenameOver(const std::wstring& path, const std::wstring& target) noexcept;

void Remove(const std::string& path) noexcept;
void Remove(const std::wstring& path) noexcept;

/// Deletes the files of a folder whose names consist of `prefix` (a full path) and `digits` upper-case hexadecimal
/// digits, except those that a process holds open.
void RemoveUnused(const std::string& prefix, std::size_t digits) noexcept;
void RemoveUnused(const std::wstring& prefix, std::size_t digits) noexcept;

}  // namespace win
