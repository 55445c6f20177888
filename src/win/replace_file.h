// Replacing the content of a file atomically.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "win/file.h"

namespace win {

/// The outcome of replacing a file's content.
struct Replaced {
  bool opened = false;      // the file, or its replacement, could be opened for writing
  std::size_t written = 0;  // bytes written
  bool complete = false;    // the new content is in place and flushed
  bool inPlace = false;     // the file was overwritten, because it could not be replaced atomically
  DWORD error = 0;          // of Windows, why it was not replaced atomically
};

/// Replaces the content of a file atomically: writes it to a temporary file in the same folder, flushes that, and
/// renames it over the file. A process killed at any point leaves the old content or the new one, never a mixture.
/// While another process holds the file open, the rename is retried for a second.
///
/// When that fails, or the file's access rights cannot be read, the file is overwritten in place, after reserving the
/// space on disk: content that has no space leaves the old content.
///
/// `like` is the status of the file: the new content gets its attributes, and a last-write time different from its.
/// Temporary files are named `<path>.KE~` and twelve hexadecimal digits; no two processes share one.
Replaced ReplaceContent(const std::string& path, std::string_view content, const FileStatus& like) noexcept;
Replaced ReplaceContent(const std::wstring& path, std::string_view content, const FileStatus& like) noexcept;

/// The same with the present status of the file.
inline Replaced ReplaceContent(const std::string& path, std::string_view content) noexcept {
  return ReplaceContent(path, content, StatusOf(path));
}

/// Removes the temporary files that killed processes have left for `path`. Those of running processes stay.
void RemoveLeftovers(const std::string& path) noexcept;
void RemoveLeftovers(const std::wstring& path) noexcept;

}  // namespace win
