#include "gpscripts/policy_file.h"

#include "frame/fs_redirection.h"
#include "frame/replace_file.h"
#include "frame/waiting.h"
#include "win/file.h"

namespace gpscripts {
namespace {

constexpr DWORD kPauses[] = {1, 5, 10, 20, 40, 80};  // milliseconds between two attempts; 156 in all

// An error that another process causes by what it does with the file at the moment.
bool IsHeld(DWORD error) noexcept {
  return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION || error == ERROR_ACCESS_DENIED ||
         error == ERROR_USER_MAPPED_FILE || error == ERROR_READ_FAULT;
}

template <typename Attempt>
DWORD WithRetries(Attempt attempt) {
  for (const DWORD pause : kPauses) {
    if (const DWORD error = attempt(); !IsHeld(error)) return error;
    frame::Pause(pause);
  }
  return attempt();
}

void CreateFolderOf(const std::wstring& path) {
  const auto end = path.find_last_of(L'\\');
  if (end == std::wstring::npos) return;
  const std::wstring folder = path.substr(0, end);
  const auto create = [&] {
    return CreateDirectoryW(folder.c_str(), nullptr) || GetLastError() != ERROR_PATH_NOT_FOUND;
  };
  if (frame::Unredirected(create)) return;
  CreateFolderOf(folder);
  frame::Unredirected(create);
}

DWORD CheckOnce(const std::wstring& path) noexcept {
  const win::FileHandle file(frame::Unredirected([&] {
    return CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
  }));
  return file || IsMissing(GetLastError()) ? DWORD{ERROR_SUCCESS} : GetLastError();
}

DWORD ReadOnce(const std::wstring& path, std::size_t limit, std::string& bytes) {
  bytes.clear();
  const win::FileHandle file = frame::Unredirected([&] { return win::OpenForReading(path); });
  if (!file) return GetLastError();
  const auto size = win::SizeOf(file);
  if (!size) return GetLastError();
  if (*size > limit) return ERROR_FILE_TOO_LARGE;
  bytes.resize(static_cast<std::size_t>(*size));
  return win::Read(file, bytes.data(), bytes.size()) == bytes.size() ? ERROR_SUCCESS : ERROR_READ_FAULT;
}

// One scope for the whole replacement: it makes file calls and pauses only, and loads no DLL.
frame::Replaced Replace(const std::wstring& path, const std::string& bytes, const win::FileStatus& like) noexcept {
  return frame::Unredirected([&] { return frame::ReplaceContent(path, bytes, like); });
}

}  // namespace

DWORD CheckWritable(const std::wstring& path) {
  return WithRetries([&] { return CheckOnce(path); });
}

DWORD ReadPolicyFile(const std::wstring& path, std::size_t limit, std::string& bytes) {
  return WithRetries([&] { return ReadOnce(path, limit, bytes); });
}

DWORD WritePolicyFile(const SinkCall& call, const std::wstring& path, const std::string& bytes, const std::string& old,
                      DWORD attributes) {
  win::FileStatus status = frame::Unredirected([&] { return win::StatusOf(path); });
  if (!status.exists) {
    if (!win::LastErrorIsNotFound()) return GetLastError();
    status.attributes = attributes;
    CreateFolderOf(path);
  }
  const frame::Replaced replaced = Replace(path, bytes, status);
  const DWORD error = GetLastError();
  if (replaced.inPlace && replaced.opened) call.Fail(KE_SUCCESS, replaced.error, L"Overwritten in place", path.c_str());
  if (replaced.inPlace && !status.exists)
    frame::Unredirected([&] { return SetFileAttributesW(path.c_str(), attributes); });
  if (replaced.complete) return ERROR_SUCCESS;
  if (status.exists && replaced.written > 0) Replace(path, old, status);
  return error == ERROR_SUCCESS ? DWORD{ERROR_WRITE_FAULT} : error;
}

void RemovePolicyLeftovers(const std::wstring& path) noexcept {
  frame::Unredirected([&] { frame::RemoveLeftovers(path); });
}

DWORD DeletePolicyFile(const std::wstring& path) {
  return WithRetries([&] { return DeleteAtOnce(path); });
}

DWORD DeleteAtOnce(const std::wstring& path) noexcept {
  const DWORD attributes = AttributesOf(path);
  const bool readOnly = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
  const auto setAttributes = [&](DWORD set) {
    frame::Unredirected([&] { return SetFileAttributesW(path.c_str(), set); });
  };
  if (readOnly) setAttributes(attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
  if (frame::Unredirected([&] { return DeleteFileW(path.c_str()); })) return ERROR_SUCCESS;
  const DWORD error = GetLastError();
  if (readOnly) setAttributes(attributes);
  return IsMissing(error) ? DWORD{ERROR_SUCCESS} : error;
}

DWORD AttributesOf(const std::wstring& path) noexcept {
  return frame::Unredirected([&] { return GetFileAttributesW(path.c_str()); });
}

}  // namespace gpscripts
