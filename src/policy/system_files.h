// Files of the true system folder, independent of the file-system redirection of 32-bit processes on 64-bit Windows.
#pragma once

#include <windows.h>

#include <string>

#include "policy/log_sink.h"

namespace policy {

/// Switches the redirection off for the calling thread and stores the argument of `RevertFsRedirection` in `*old`.
/// False when Windows refuses, or has no redirection (last error 1).
bool DisableFsRedirection(void** old) noexcept;

/// Restores the redirection. False as above.
bool RevertFsRedirection(void* old) noexcept;

// Small files of the policy, read and written whole. Results are error codes of Windows, ERROR_SUCCESS among them.
//
// While another process holds a file open, reading, checking and deleting are retried for 156 ms. Writing is retried by
// `win::ReplaceContent` alone, for a second.

/// True for the errors of a missing file or folder.
constexpr bool IsMissing(DWORD error) noexcept {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

/// Reads a file of at most `limit` bytes; ERROR_FILE_TOO_LARGE for a larger one.
DWORD ReadPolicyFile(const std::wstring& path, std::size_t limit, std::string& bytes);

/// Replaces the content of a file by `bytes`, atomically. An existing file keeps its attributes and access rights; a
/// new one gets `attributes`, and missing folders are created. Overwriting in place, the last resort, is written to the
/// sink; when it fails midway, `old`, the former content, is written back.
DWORD WritePolicyFile(const SinkCall& call, const std::wstring& path, const std::string& bytes, const std::string& old,
                      DWORD attributes);

/// Removes the temporary files of killed processes that were writing the file.
void RemovePolicyLeftovers(const std::wstring& path) noexcept;

/// ERROR_SUCCESS when no other process is writing the file and this one may write it, or when it is missing.
DWORD CheckWritable(const std::wstring& path);

/// Deletes a file, also a read-only one, which stays read-only when that fails. A missing one is a success.
DWORD DeletePolicyFile(const std::wstring& path);

// Deleting, at once or at the next start of the machine. Results are KE_SUCCESS, also for a missing file or folder, or
// KE_STORE_UNUSABLE when Windows refuses both, mostly for lack of rights. Paths are full.

/// Deletes a file, also a read-only one; a file in use at the next start. A folder is not deleted.
KE_RESULT DeleteFileNowOrAtReboot(ILogSink* sink, const std::wstring& path);

/// Deletes a folder with all below it; files in use, with the folders above them, at the next start. A link to another
/// folder is deleted, and not its target. A failure does not end the deletion. Only the tests call it.
KE_RESULT DeleteDirectoryTree(ILogSink* sink, const std::wstring& path);

}  // namespace policy
