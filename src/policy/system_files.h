// The file-system redirection of 32-bit processes on 64-bit Windows.
#pragma once

#include <windows.h>

#include <string>

#include "policy/log_sink.h"

namespace policy {

/// Switches the redirection off for the calling thread and stores what `RevertFsRedirection` needs in `*old`. False
/// when the platform refuses, or has no redirection (last error 1).
bool DisableFsRedirection(void** old) noexcept;

/// Switches it back to what it was. False as above.
bool RevertFsRedirection(void* old) noexcept;

/// Has the calling thread see the true folders of the system, in the scope of one file call: nothing that may load a
/// DLL belongs there. Keeps the last-error value at its end.
class UnredirectedFiles {
 public:
  UnredirectedFiles() noexcept : off_(DisableFsRedirection(&old_)) {}
  ~UnredirectedFiles();
  UnredirectedFiles(const UnredirectedFiles&) = delete;
  UnredirectedFiles& operator=(const UnredirectedFiles&) = delete;

 private:
  void* old_ = nullptr;
  bool off_;
};

/// What `call()` returns, made on the true folders.
template <typename Call>
auto WithoutWow64Redirection(Call call) {
  const UnredirectedFiles scope;
  return call();
}

// Small files of the policy, read and written whole in the true system folder, whatever the redirection of 32-bit
// processes. Results are the platform's error codes, ERROR_SUCCESS among them.
//
// While another process holds a file, reading, checking and deleting are retried for 156 ms. Writing is retried by
// `win::ReplaceContent` alone, for a second.

/// True for the errors that say that there is no such file, or no folder for it.
constexpr bool IsMissing(DWORD error) noexcept {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

/// Reads a file of at most `limit` bytes; ERROR_FILE_TOO_LARGE for a larger one.
DWORD ReadPolicyFile(const std::wstring& path, std::size_t limit, std::string& bytes);

/// Replaces the content of a file by `bytes`, atomically. An existing file keeps its attributes and access rights; a
/// new one gets `attributes`, and the folders above it are created. Overwriting in place, the last resort, is written
/// to the sink; when that fails midway, the file gets `old`, its former content, back.
DWORD WritePolicyFile(const SinkCall& call, const std::wstring& path, const std::string& bytes, const std::string& old,
                      DWORD attributes);

/// Removes what killed processes have left of writing the file.
void RemovePolicyLeftovers(const std::wstring& path) noexcept;

/// ERROR_SUCCESS when nobody else is writing the file and this process may write it, or when there is none.
DWORD CheckWritable(const std::wstring& path);

/// Deletes a file, also a read-only one, which stays read-only when that fails. A missing one is a success.
DWORD DeletePolicyFile(const std::wstring& path);

/// The same in a single attempt.
DWORD DeleteAtOnce(const std::wstring& path) noexcept;

/// The platform's attributes of a file or folder; INVALID_FILE_ATTRIBUTES, with the last error set, when there is none.
DWORD AttributesOf(const std::wstring& path) noexcept;

// Deleting a file or an empty folder, at once or when the machine starts next.

/// Has the platform delete `path`, a full one, when the machine starts next; a folder must be empty by then. The path
/// means the true system folder. KE_SUCCESS, or KE_STORE_UNUSABLE when the platform refuses, mostly for lack of rights.
KE_RESULT DeleteAtReboot(ILogSink* sink, const std::wstring& path);

/// Deletes a file, also a read-only one, or leaves that to the next start of the machine when it is in use. A missing
/// file is a success; a folder is left alone. KE_SUCCESS or KE_STORE_UNUSABLE.
KE_RESULT DeleteFileNowOrAtReboot(ILogSink* sink, const std::wstring& path);

// Trees of folders.

/// Deletes the folder `path`, a full one, with all below it. What is in use is left to the next start of the machine,
/// with the folders above it. A link to another folder is deleted, and not what it leads to. A missing folder is a
/// success. KE_SUCCESS, or KE_STORE_UNUSABLE when something can be deleted neither now nor then; the rest is deleted
/// nevertheless.
KE_RESULT DeleteDirectoryTree(ILogSink* sink, const std::wstring& path);

}  // namespace policy
