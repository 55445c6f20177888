// Deleting a file or an empty folder, at once or when the machine starts next.
#pragma once

#include <string>

#include "frame/log_sink.h"

namespace gpscripts {

/// Has the platform delete `path`, a full one, when the machine starts next; a folder must be empty by then. The path
/// means the true system folder. KE_SUCCESS, or KE_STORE_UNUSABLE when the platform refuses, mostly for lack of rights.
KE_RESULT DeleteAtReboot(frame::ILogSink* sink, const std::wstring& path);

/// Deletes a file, also a read-only one, or leaves that to the next start of the machine when it is in use. A missing
/// file is a success; a folder is left alone. KE_SUCCESS or KE_STORE_UNUSABLE.
KE_RESULT DeleteFileNowOrAtReboot(frame::ILogSink* sink, const std::wstring& path);

}  // namespace gpscripts
