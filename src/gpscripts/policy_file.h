// Small files of the policy, read and written whole in the true system folder, whatever the redirection of 32-bit
// processes. Results are the platform's error codes, ERROR_SUCCESS among them.
//
// While another process holds a file, reading, checking and deleting are retried for 156 ms. Writing is retried by
// `frame::ReplaceContent` alone, for a second.
#pragma once

#include <windows.h>

#include <string>

#include "gpscripts/sink_call.h"

namespace gpscripts {

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

}  // namespace gpscripts
