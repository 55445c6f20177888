// Small files of the policy, read and written whole in the true system folder, whatever the redirection of 32-bit
// processes. Results are the platform's error codes, ERROR_SUCCESS among them.
#pragma once

#include <windows.h>

#include <string>

namespace gpscripts {

/// True for the errors that say that there is no such file, or no folder for it.
constexpr bool IsMissing(DWORD error) noexcept {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

/// Reads a file of at most `limit` bytes; ERROR_FILE_TOO_LARGE for a larger one.
DWORD ReadPolicyFile(const std::wstring& path, std::size_t limit, std::string& bytes);

/// Writes `bytes` over a file and cuts it behind them. An existing file keeps its attributes, and gets `old`, which it
/// held, back when the writing fails; a new one gets `attributes`, and the folders above it are created.
DWORD WritePolicyFile(const std::wstring& path, const std::string& bytes, const std::string& old, DWORD attributes);

/// ERROR_SUCCESS when `WritePolicyFile` would not fail on opening the file, or when there is none.
DWORD CheckWritable(const std::wstring& path);

/// Deletes a file, also a read-only one, which stays read-only when that fails. A missing one is a success.
DWORD DeletePolicyFile(const std::wstring& path) noexcept;

/// The platform's attributes of a file or folder; INVALID_FILE_ATTRIBUTES, with the last error set, when there is none.
DWORD AttributesOf(const std::wstring& path) noexcept;

}  // namespace gpscripts
