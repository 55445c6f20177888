// Trees of folders.
#pragma once

#include <string>

#include "frame/log_sink.h"

namespace gpscripts {

/// Deletes the folder `path`, a full one, with all below it. What is in use is left to the next start of the machine,
/// with the folders above it. A link to another folder is deleted, and not what it leads to. A missing folder is a
/// success. KE_SUCCESS, or KE_STORE_UNUSABLE when something can be deleted neither now nor then; the rest is deleted
/// nevertheless.
KE_RESULT DeleteDirectoryTree(frame::ILogSink* sink, const std::wstring& path);

}  // namespace gpscripts
