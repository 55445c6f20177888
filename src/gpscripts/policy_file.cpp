#include "gpscripts/policy_file.h"

#include "frame/fs_redirection.h"
#include "win/file.h"

namespace gpscripts {
namespace {

win::FileHandle Open(const std::wstring& path, DWORD access, DWORD share, DWORD disposition, DWORD attributes) {
  return frame::Unredirected([&] {
    return win::FileHandle(CreateFileW(path.c_str(), access, share, nullptr, disposition, attributes, nullptr));
  });
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

bool WriteFromBegin(const win::FileHandle& file, const std::string& bytes) noexcept {
  return SetFilePointer(file.Get(), 0, nullptr, FILE_BEGIN) == 0 &&
         win::Write(file, bytes.data(), bytes.size()) == bytes.size() && SetEndOfFile(file.Get()) && win::Flush(file);
}

}  // namespace

DWORD CheckWritable(const std::wstring& path) {
  const win::FileHandle file =
      Open(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
  if (file) return ERROR_SUCCESS;
  const DWORD error = GetLastError();
  return IsMissing(error) ? DWORD{ERROR_SUCCESS} : error;
}

DWORD ReadPolicyFile(const std::wstring& path, std::size_t limit, std::string& bytes) {
  const win::FileHandle file = Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
  if (!file) return GetLastError();
  const auto size = win::SizeOf(file);
  if (!size) return GetLastError();
  if (*size > limit) return ERROR_FILE_TOO_LARGE;
  bytes.resize(static_cast<std::size_t>(*size));
  return win::Read(file, bytes.data(), bytes.size()) == bytes.size() ? ERROR_SUCCESS : ERROR_READ_FAULT;
}

DWORD WritePolicyFile(const std::wstring& path, const std::string& bytes, const std::string& old, DWORD attributes) {
  // OPEN_ALWAYS instead of CREATE_ALWAYS, which the platform refuses for hidden files.
  const auto open = [&] { return Open(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS, attributes); };
  win::FileHandle file = open();
  if (!file && GetLastError() == ERROR_PATH_NOT_FOUND) {
    CreateFolderOf(path);
    file = open();
  }
  if (!file) return GetLastError();
  if (WriteFromBegin(file, bytes)) return ERROR_SUCCESS;
  const DWORD error = GetLastError();
  WriteFromBegin(file, old);
  return error == ERROR_SUCCESS ? DWORD{ERROR_WRITE_FAULT} : error;
}

DWORD DeletePolicyFile(const std::wstring& path) noexcept {
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
