#include "win/file.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <type_traits>

#include "text/text.h"
#include "win/gate.h"

namespace win {

namespace {

// The form of a call of Windows for paths of this type.
template <typename Path, typename Narrow, typename Wide>
constexpr auto For(Narrow narrow, Wide wide) noexcept {
  if constexpr (std::is_same_v<Path, std::string>) {
    return narrow;
  } else {
    return wide;
  }
}

constexpr ACCESS_MASK kWrites =
    FILE_WRITE_DATA | GENERIC_WRITE | GENERIC_ALL;  // the first is FILE_ADD_FILE of a folder

// Restricts an entry to accounts that may write. False for an entry that does not concern writing the object itself.
bool MakeWriters(ACCESS_ALLOWED_ACE& entry) noexcept {
  const BYTE type = entry.Header.AceType;
  if (type != ACCESS_ALLOWED_ACE_TYPE && type != ACCESS_DENIED_ACE_TYPE) return false;
  if ((entry.Header.AceFlags & INHERIT_ONLY_ACE) != 0 || (entry.Mask & kWrites) == 0) return false;
  entry.Header.AceFlags = 0;
  // NOLINTNEXTLINE(misc-redundant-expression): the rights of Windows to read and to write overlap
  entry.Mask = type == ACCESS_DENIED_ACE_TYPE ? FILE_ALL_ACCESS : FILE_GENERIC_READ | FILE_GENERIC_WRITE | DELETE;
  return true;
}

}  // namespace

template <typename Path>
bool AccessRights::ReadOf(const Path& path) noexcept {
  if (!Passes(Call::kRights)) return false;
  const auto function = For<Path>(GetFileSecurityA, GetFileSecurityW);
  DWORD size = 0;
  function(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
  if (GetLastError() != ERROR_INSUFFICIENT_BUFFER) return false;
  block_.reset(new (std::nothrow) char[size]);
  if (!block_) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return false;
  }
  if (function(path.c_str(), DACL_SECURITY_INFORMATION, block_.get(), size, &size)) return true;
  block_.reset();
  return false;
}

bool AccessRights::Read(const std::string& path) noexcept { return ReadOf(path); }
bool AccessRights::Read(const std::wstring& path) noexcept { return ReadOf(path); }

bool AccessRights::KeepWriters() noexcept {
  BOOL present = FALSE, defaulted = FALSE;
  ACL* list = nullptr;
  if (!GetSecurityDescriptorDacl(block_.get(), &present, &list, &defaulted)) return false;
  if (!present || list == nullptr) return true;  // no restrictions
  for (DWORD i = list->AceCount; i-- > 0;) {
    void* entry = nullptr;
    if (!GetAce(list, i, &entry)) return false;
    if (!MakeWriters(*static_cast<ACCESS_ALLOWED_ACE*>(entry)) && !DeleteAce(list, i)) return false;
  }
  return true;
}

SECURITY_ATTRIBUTES* AccessRights::ForNewFile() noexcept {
  if (!block_) return nullptr;
  inherits_ = (Control() & SE_DACL_PROTECTED) == 0;
  Control() |= SE_DACL_PROTECTED;
  attributes_.lpSecurityDescriptor = block_.get();
  return &attributes_;
}

bool AccessRights::RestoreInheritance(const FileHandle& file) noexcept {
  if (!inherits_) return true;
  Control() &= static_cast<SECURITY_DESCRIPTOR_CONTROL>(~SE_DACL_PROTECTED);
  return Passes(Call::kRights) && SetKernelObjectSecurity(file.Get(), DACL_SECURITY_INFORMATION, block_.get());
}

Gate g_gate = nullptr;

namespace {

// Bytes of one call at most; larger blocks take several calls.
constexpr std::size_t kLargestTransfer = 64 * 1024 * 1024;

std::uint64_t ToInteger(const FILETIME& time) noexcept {
  return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

FILETIME ToTime(std::uint64_t time) noexcept {
  return {.dwLowDateTime = static_cast<DWORD>(time), .dwHighDateTime = static_cast<DWORD>(time >> 32)};
}

constexpr DWORD kUpdate = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

template <typename Path>
FileHandle Open(const Path& path, DWORD access, DWORD disposition, DWORD attributes = FILE_ATTRIBUTE_NORMAL,
                SECURITY_ATTRIBUTES* security = nullptr, DWORD share = kShareAll) noexcept {
  if (!Passes(Call::kOpen)) return FileHandle();
  return FileHandle(
      For<Path>(CreateFileA, CreateFileW)(path.c_str(), access, share, security, disposition, attributes, nullptr));
}

template <typename Path>
FileStatus StatusOfPath(const Path& path) noexcept {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (!Passes(Call::kStatus) ||
      !For<Path>(GetFileAttributesExA, GetFileAttributesExW)(path.c_str(), GetFileExInfoStandard, &data))
    return {};
  return {.exists = true,
          .attributes = data.dwFileAttributes,
          .size = (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow,
          .created = ToInteger(data.ftCreationTime),
          .accessed = ToInteger(data.ftLastAccessTime),
          .written = ToInteger(data.ftLastWriteTime)};
}

template <typename Path>
FileHandle CreateReplacementOf(const Path& path, const Path& target, DWORD attributes) noexcept {
  // Attributes that a file can be created with. A read-only target is never replaced.
  constexpr DWORD kKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                          FILE_ATTRIBUTE_ENCRYPTED | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
  const DWORD kept = (attributes & kKept) != 0 ? attributes & kKept : DWORD{FILE_ATTRIBUTE_NORMAL};
  AccessRights rights;
  if (!rights.Read(target) && !LastErrorIsNotFound()) return FileHandle();
  FileHandle file = Open(path, kUpdate | WRITE_DAC, CREATE_NEW, kept, rights.ForNewFile());
  if (!file || rights.RestoreInheritance(file)) return file;
  const DWORD error = GetLastError();
  file.Reset();
  Remove(path);
  SetLastError(error);
  return file;
}

template <typename Path>
bool RenamePathOver(const Path& path, const Path& target) noexcept {
  return Passes(Call::kMove) && For<Path>(MoveFileExA, MoveFileExW)(path.c_str(), target.c_str(),
                                                                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
}

template <typename Path>
void RemovePath(const Path& path) noexcept {
  if (Passes(Call::kDelete)) For<Path>(DeleteFileA, DeleteFileW)(path.c_str());
}

template <typename Path>
void RemoveUnusedFiles(const Path& prefix, std::size_t digits) noexcept {
  using View = std::basic_string_view<typename Path::value_type>;
  const auto isDigit = [](auto c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); };
  try {
    std::conditional_t<std::is_same_v<Path, std::string>, WIN32_FIND_DATAA, WIN32_FIND_DATAW> found{};
    const Path pattern = prefix + Path(1, '*');
    if (!Passes(Call::kFind)) return;
    const FindHandle search(For<Path>(FindFirstFileA, FindFirstFileW)(pattern.c_str(), &found));
    if (!search) return;
    const Path folder(prefix, 0, prefix.find_last_of(Path{'\\', '/'}) + 1), start(prefix, folder.size());
    do {
      const Path name(found.cFileName);
      // The search also finds short names.
      if (name.size() != start.size() + digits || !std::ranges::all_of(name.substr(start.size()), isDigit) ||
          !text::SameName(View(name).substr(0, start.size()), View(start))) {
        continue;
      }
      // Fails while a process has the file open; closing the handle deletes it.
      Open(folder + name, DELETE, OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr, 0);
    } while (Passes(Call::kFind) && For<Path>(FindNextFileA, FindNextFileW)(search.Get(), &found));
  } catch (...) {
    // Out of memory for a name: the files stay until the next call.
  }
}

// Reads or writes in bounded steps until everything is moved, or a step fails or moves nothing.
template <typename Byte, typename Step>
std::size_t Transfer(Call call, Byte* data, std::size_t size, Step step) noexcept {
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

FileStatus StatusOf(const std::string& path) noexcept { return StatusOfPath(path); }
FileStatus StatusOf(const std::wstring& path) noexcept { return StatusOfPath(path); }

bool LastErrorIsNotFound() noexcept {
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

std::uint64_t Now() noexcept {
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  return ToInteger(now);
}

bool Exists(const std::string& path) noexcept {
  return Passes(Call::kStatus) && GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void MakeFolder(const std::string& path) noexcept {
  if (Passes(Call::kFolder)) CreateDirectoryA(path.c_str(), nullptr);
}

FileHandle OpenForUpdate(const std::string& path) noexcept { return Open(path, kUpdate, OPEN_EXISTING); }

FileHandle CreateForUpdate(const std::string& path) noexcept {
  FileHandle file = OpenOrCreate(path);
  if (file && (!Passes(Call::kResize) || !SetEndOfFile(file.Get()))) file.Reset();
  return file;
}

FileHandle OpenForReading(const std::string& path) noexcept { return Open(path, GENERIC_READ, OPEN_EXISTING); }
FileHandle OpenForReading(const std::wstring& path) noexcept { return Open(path, GENERIC_READ, OPEN_EXISTING); }

FileHandle OpenOrCreate(const std::string& path, SECURITY_ATTRIBUTES* security) noexcept {
  return Open(path, kUpdate, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, security);
}
FileHandle OpenOrCreate(const std::wstring& path) noexcept { return Open(path, kUpdate, OPEN_ALWAYS); }

FileHandle CreateReplacement(const std::string& path, const std::string& target, unsigned long attributes) noexcept {
  return CreateReplacementOf(path, target, attributes);
}
FileHandle CreateReplacement(const std::wstring& path, const std::wstring& target, unsigned long attributes) noexcept {
  return CreateReplacementOf(path, target, attributes);
}

bool CreateMissing(const std::string& path) noexcept { return static_cast<bool>(OpenOrCreate(path)); }

std::optional<std::uint64_t> SizeOf(const FileHandle& file) noexcept {
  LARGE_INTEGER size{};
  if (!Passes(Call::kSize) || !GetFileSizeEx(file.Get(), &size)) return std::nullopt;
  return static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t Read(const FileHandle& file, void* data, std::size_t size) noexcept {
  return Transfer(Call::kRead, static_cast<char*>(data), size, [&](char* to, DWORD wanted, DWORD* moved) {
    return ReadFile(file.Get(), to, wanted, moved, nullptr);
  });
}

std::size_t Write(const FileHandle& file, const void* data, std::size_t size) noexcept {
  return Transfer(Call::kWrite, static_cast<const char*>(data), size,
                  [&](const char* from, DWORD wanted, DWORD* moved) {
                    return WriteFile(file.Get(), from, wanted, moved, nullptr);
                  });
}

bool Flush(const FileHandle& file) noexcept { return Passes(Call::kFlush) && FlushFileBuffers(file.Get()); }

bool Resize(const FileHandle& file, std::uint64_t size) noexcept {
  LARGE_INTEGER end{};
  end.QuadPart = static_cast<LONGLONG>(size);
  return Passes(Call::kResize) && SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN) && SetEndOfFile(file.Get()) &&
         SetFilePointerEx(file.Get(), {}, nullptr, FILE_BEGIN);
}

bool SetWritten(const FileHandle& file, std::uint64_t time) noexcept {
  const FILETIME written = ToTime(time);
  return Passes(Call::kTime) && SetFileTime(file.Get(), nullptr, nullptr, &written);
}

bool RenameOver(const std::string& path, const std::string& target) noexcept { return RenamePathOver(path, target); }
bool RenameOver(const std::wstring& path, const std::wstring& target) noexcept { return RenamePathOver(path, target); }

void Remove(const std::string& path) noexcept { RemovePath(path); }
void Remove(const std::wstring& path) noexcept { RemovePath(path); }

void RemoveUnused(const std::string& prefix, std::size_t digits) noexcept { RemoveUnusedFiles(prefix, digits); }
void RemoveUnused(const std::wstring& prefix, std::size_t digits) noexcept { RemoveUnusedFiles(prefix, digits); }

}  // namespace win
