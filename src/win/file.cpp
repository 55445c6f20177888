#include "win/file.h"

#include <algorithm>

namespace win {

FileGate g_fileGate = nullptr;

namespace {

bool Passes(FileCall call, DWORD& bytes) noexcept { return g_fileGate == nullptr || g_fileGate(call, bytes); }

bool Passes(FileCall call) noexcept {
  DWORD none = 0;
  return Passes(call, none);
}

// One call moves at most this many bytes; larger blocks go in several calls.
constexpr std::size_t kLargestTransfer = 64 * 1024 * 1024;

std::uint64_t ToInteger(const FILETIME& time) noexcept {
  return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

FILETIME ToTime(std::uint64_t time) noexcept {
  return {.dwLowDateTime = static_cast<DWORD>(time), .dwHighDateTime = static_cast<DWORD>(time >> 32)};
}

constexpr DWORD kUpdate = GENERIC_READ | GENERIC_WRITE;

FileHandle Open(const std::string& path, DWORD access, DWORD share, DWORD disposition,
                DWORD attributes = FILE_ATTRIBUTE_NORMAL, SECURITY_ATTRIBUTES* security = nullptr) noexcept {
  if (!Passes(FileCall::kOpen)) return FileHandle();
  return FileHandle(CreateFileA(path.c_str(), access, share, security, disposition, attributes, nullptr));
}

FileHandle Open(const std::string& path, DWORD disposition) noexcept {
  return Open(path, kUpdate, FILE_SHARE_READ | FILE_SHARE_WRITE, disposition);
}

// Reads or writes in bounded steps until all is moved, nothing more moves or a step fails.
template <typename Byte, typename Step>
std::size_t Transfer(FileCall call, Byte* data, std::size_t size, Step step) noexcept {
  std::size_t done = 0;
  while (done < size) {
    auto wanted = static_cast<DWORD>(std::min(size - done, kLargestTransfer));
    DWORD moved = 0;
    if (!Passes(call, wanted) || !step(data + done, wanted, &moved) || moved == 0) break;
    done += moved;
  }
  return done;
}

}  // namespace

FileStatus StatusOf(const std::string& path) noexcept {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (!Passes(FileCall::kStatus) || !GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data)) return {};
  return {.exists = true,
          .attributes = data.dwFileAttributes,
          .size = (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow,
          .created = ToInteger(data.ftCreationTime),
          .accessed = ToInteger(data.ftLastAccessTime),
          .written = ToInteger(data.ftLastWriteTime)};
}

bool WasMissing() noexcept {
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

std::uint64_t Now() noexcept {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return ToInteger(now);
}

bool Exists(const std::string& path) noexcept {
  return Passes(FileCall::kStatus) && GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MakeFolder(const std::string& path) noexcept { CreateDirectoryA(path.c_str(), nullptr); }

FileHandle OpenForUpdate(const std::string& path) noexcept { return Open(path, OPEN_EXISTING); }

FileHandle CreateForUpdate(const std::string& path) noexcept {
  FileHandle file = OpenOrCreate(path);
  if (file && (!Passes(FileCall::kResize) || !SetEndOfFile(file.Get()))) file.Reset();
  return file;
}

FileHandle OpenForReading(const std::string& path) noexcept {
  return Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING);
}

FileHandle OpenOrCreate(const std::string& path) noexcept { return Open(path, OPEN_ALWAYS); }

FileHandle CreateReplacement(const std::string& path, const std::string& target, unsigned long attributes) noexcept {
  // Attributes that a file can be created with. A read-only target stays in place anyway.
  constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                          FILE_ATTRIBUTE_ENCRYPTED | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
  const DWORD kept = (attributes & kKept) != 0 ? attributes & kKept : DWORD{FILE_ATTRIBUTE_NORMAL};
  alignas(SECURITY_DESCRIPTOR) char rights[2048];
  SECURITY_ATTRIBUTES security{.nLength = sizeof security, .lpSecurityDescriptor = rights, .bInheritHandle = FALSE};
  DWORD needed = 0;
  const bool known = Passes(FileCall::kStatus) &&
                     GetFileSecurityA(target.c_str(), DACL_SECURITY_INFORMATION, rights, sizeof rights, &needed);
  const auto create = [&] { return Open(path, kUpdate, 0, CREATE_NEW, kept, known ? &security : nullptr); };
  FileHandle file = create();
  if (!file && GetLastError() == ERROR_FILE_EXISTS) {
    Remove(path);
    file = create();
  }
  return file;
}

bool CreateMissing(const std::string& path) noexcept { return static_cast<bool>(OpenOrCreate(path)); }

std::optional<std::uint64_t> SizeOf(const FileHandle& file) noexcept {
  LARGE_INTEGER size{};
  if (!Passes(FileCall::kSize) || !GetFileSizeEx(file.Get(), &size)) return std::nullopt;
  return static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t Read(const FileHandle& file, void* data, std::size_t size) noexcept {
  return Transfer(FileCall::kRead, static_cast<char*>(data), size, [&](char* to, DWORD wanted, DWORD* moved) {
    return ReadFile(file.Get(), to, wanted, moved, nullptr);
  });
}

std::size_t Write(const FileHandle& file, const void* data, std::size_t size) noexcept {
  return Transfer(FileCall::kWrite, static_cast<const char*>(data), size,
                  [&](const char* from, DWORD wanted, DWORD* moved) {
                    return WriteFile(file.Get(), from, wanted, moved, nullptr);
                  });
}

bool Flush(const FileHandle& file) noexcept { return Passes(FileCall::kFlush) && FlushFileBuffers(file.Get()); }

bool Resize(const FileHandle& file, std::uint64_t size) noexcept {
  LARGE_INTEGER end{};
  end.QuadPart = static_cast<LONGLONG>(size);
  return Passes(FileCall::kResize) && SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN) &&
         SetEndOfFile(file.Get()) && SetFilePointerEx(file.Get(), {}, nullptr, FILE_BEGIN);
}

bool SetWritten(const FileHandle& file, std::uint64_t time) noexcept {
  const FILETIME written = ToTime(time);
  return Passes(FileCall::kTime) && SetFileTime(file.Get(), nullptr, nullptr, &written);
}

bool PutInPlace(const std::string& path, const std::string& target) noexcept {
  return Passes(FileCall::kMove) &&
         MoveFileExA(path.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

void Remove(const std::string& path) noexcept {
  if (Passes(FileCall::kDelete)) DeleteFileA(path.c_str());
}

}  // namespace win
