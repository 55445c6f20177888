// Replacing a file of the store so that it is whole at every moment.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "win/file.h"

namespace store {

/// What became of a file that was to be replaced.
struct Replaced {
  bool opened = false;      // the file, or one that took its place, could be opened for writing
  std::size_t written = 0;  // bytes that went out
  bool whole = false;       // the new content is in place and handed to the disk
};

/// Replaces the content of a file. The content is written beside it, as "<path>.NEW", handed to the disk and put in
/// place in one step: who ends the process at any moment leaves the old content or the new one. While another process
/// holds the file open, putting it in place is tried again for a sixth of a second. When all that fails, the file is
/// overwritten in place, the disk's room being taken first: content that has no room leaves the old one.
///
/// `like` is the status of the file whose attributes the new one gets, and whose last-write time is to differ from the
/// new one's.
Replaced ReplaceContent(const std::string& path, std::string_view content, const win::FileStatus& like) noexcept;

/// Replaces the content of a file by that of another one in the same way; true when all of it is in place. The
/// attributes come from the source. Throws when memory runs out, before the file was touched.
bool ReplaceByCopy(const std::string& source, const std::string& path);

}  // namespace store
