#include "sharedfile/replacement.h"

#include <cstring>

namespace sharedfile {

win::FileHandle OpenSource(const char* path) noexcept {
  return win::FileHandle(
      CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
}

bool ReadFully(const win::FileHandle& file, void* data, std::size_t size, std::size_t& length) noexcept {
  DWORD read = 0;
  for (length = 0; length < size; length += read) {
    if (!ReadFile(file.Get(), static_cast<char*>(data) + length, static_cast<DWORD>(size - length), &read, nullptr))
      return false;
    if (read == 0) break;
  }
  return true;
}

Replacement::Replacement(const char* target) noexcept {
  char* name = nullptr;
  const DWORD length = GetFullPathNameA(target, sizeof target_, target_, &name);
  if (length == 0 || length >= sizeof target_ || name == nullptr) return;
  char folder[MAX_PATH] = {};
  std::memcpy(folder, target_, static_cast<std::size_t>(name - target_));
  if (GetTempFileNameA(folder, "new", 0, path_) == 0) {
    path_[0] = '\0';
    return;
  }
  file_.Reset(CreateFileA(path_, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

Replacement::~Replacement() {
  file_.Reset();
  if (path_[0] != '\0') DeleteFileA(path_);
}

bool Replacement::Write(const void* data, std::size_t length) noexcept {
  DWORD written = 0;
  return file_ && WriteFile(file_.Get(), data, static_cast<DWORD>(length), &written, nullptr) && written == length;
}

bool Replacement::PutInPlace() noexcept {
  if (!file_ || !FlushFileBuffers(file_.Get())) return false;
  file_.Reset();
  if (!MoveFileExA(path_, target_, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) return false;
  path_[0] = '\0';
  return true;
}

}  // namespace sharedfile
