#include "win/file.h"

#include <algorithm>

namespace win {
namespace {

// One call moves at most this many bytes; larger blocks go in several calls.
constexpr std::size_t kLargestTransfer = 64 * 1024 * 1024;

std::uint64_t ToInteger(const FILETIME& time) noexcept {
  return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

FileHandle Open(const std::string& path, DWORD disposition) noexcept {
  return FileHandle(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Reads or writes in bounded steps until all is moved, nothing more moves or a step fails.
template <typename Byte, typename Step>
std::size_t Transfer(Byte* data, std::size_t size, Step step) noexcept {
  std::size_t done = 0;
  while (done < size) {
    const auto wanted = static_cast<DWORD>(std::min(size - done, kLargestTransfer));
    DWORD moved = 0;
    if (!step(data + done, wanted, &moved) || moved == 0) break;
    done += moved;
  }
  return done;
}

}  // namespace

FileStatus StatusOf(const std::string& path) noexcept {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return {};
  return {.exists = true,
          .size = (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow,
          .created = ToInteger(data.ftCreationTime),
          .accessed = ToInteger(data.ftLastAccessTime),
          .written = ToInteger(data.ftLastWriteTime)};
}

bool Exists(const std::string& path) noexcept { return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

void MakeFolder(const std::string& path) noexcept { CreateDirectoryA(path.c_str(), nullptr); }

FileHandle OpenForUpdate(const std::string& path) noexcept { return Open(path, OPEN_EXISTING); }

FileHandle CreateForUpdate(const std::string& path) noexcept {
  FileHandle file = Open(path, OPEN_ALWAYS);
  if (file && !SetEndOfFile(file.Get())) file.Reset();
  return file;
}

FileHandle OpenForReading(const std::string& path) noexcept {
  return FileHandle(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool CreateMissing(const std::string& path) noexcept { return static_cast<bool>(Open(path, OPEN_ALWAYS)); }

std::optional<std::uint64_t> SizeOf(const FileHandle& file) noexcept {
  LARGE_INTEGER size{};
  if (!GetFileSizeEx(file.Get(), &size)) return std::nullopt;
  return static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t Read(const FileHandle& file, void* data, std::size_t size) noexcept {
  return Transfer(static_cast<char*>(data), size, [&](char* to, DWORD wanted, DWORD* moved) {
    return ReadFile(file.Get(), to, wanted, moved, nullptr);
  });
}

std::size_t Write(const FileHandle& file, const void* data, std::size_t size) noexcept {
  return Transfer(static_cast<const char*>(data), size, [&](const char* from, DWORD wanted, DWORD* moved) {
    return WriteFile(file.Get(), from, wanted, moved, nullptr);
  });
}

bool Flush(const FileHandle& file) noexcept { return FlushFileBuffers(file.Get()) != 0; }

bool CopyOver(const std::string& source, const std::string& target) noexcept {
  if (!CopyFileA(source.c_str(), target.c_str(), FALSE)) return false;
  const DWORD attributes = GetFileAttributesA(target.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY)) {
    // A read-only copy could be neither opened for update nor written again.
    SetFileAttributesA(target.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
  }
  return true;
}

}  // namespace win
