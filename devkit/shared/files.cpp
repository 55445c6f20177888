#include "shared/files.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>

#include "shared/texts.h"
#include "win/replace_file.h"

namespace devkit {

std::string OwnPath() {
  HMODULE module = nullptr;
  constexpr DWORD kByAddress = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  char path[MAX_PATH];
  GetModuleHandleExA(kByAddress, reinterpret_cast<const char*>(&OwnPath), &module);
  const DWORD length = GetModuleFileNameA(module, path, sizeof path);
  if (length == 0 || length >= sizeof path) throw std::exception();  // too long
  return {path, length};
}

std::string NextToModule(std::string_view name) {
  const std::string path = OwnPath();
  return path.substr(0, path.rfind('\\') + 1).append(name);
}

std::string WithExtension(std::string_view extension) {
  const std::string path = OwnPath();
  const std::size_t dot = path.rfind('.');
  return path.substr(0, dot > path.rfind('\\') ? dot : path.size()).append(extension);
}

std::string ObjectName(const char* kind, const char* path) {
  char full[MAX_PATH] = {}, lower[MAX_PATH] = {}, name[64];
  const DWORD length = GetFullPathNameA(path, sizeof full, full, nullptr);
  LCMapStringA(LOCALE_INVARIANT, LCMAP_LOWERCASE, length < sizeof full ? full : path, -1, lower, sizeof lower);
  std::snprintf(name, sizeof name, "Global\\%s-%016llx", kind,
                static_cast<unsigned long long>(Hash(lower, std::strlen(lower))));
  return name;
}

SharedFileLock::SharedFileLock(const char* path, DWORD milliseconds) noexcept {
  try {
    mutex_.Reset(CreateMutexA(nullptr, FALSE, ObjectName("SharedFile", path).c_str()));
  } catch (...) {
    return;
  }
  if (!mutex_) return;
  const DWORD wait = WaitForSingleObject(mutex_.Get(), milliseconds);
  // An owner that was killed left the file whole: every change is a single write or a single rename.
  held_ = wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED;
}

SharedFileLock::~SharedFileLock() {
  if (held_) ReleaseMutex(mutex_.Get());
}

std::optional<std::string> ReadShared(const std::string& path, std::size_t longest) {
  win::FileHandle file;
  for (int attempt = 1; !file; ++attempt) {
    file = win::OpenForReading(path);
    if (file || GetLastError() != ERROR_SHARING_VIOLATION || attempt == 20) break;
    Sleep(50);
  }
  const auto size = file ? win::SizeOf(file) : std::nullopt;
  if (!size) return std::nullopt;
  std::string content(static_cast<std::size_t>(std::min<std::uint64_t>(*size, longest + 1)), '\0');
  if (win::Read(file, content.data(), content.size()) != content.size()) return std::nullopt;
  return content;
}

bool ReplaceShared(const std::string& path, std::string_view content) noexcept {
  win::RemoveLeftovers(path);
  const win::Replaced replaced = win::ReplaceContent(path, content, win::StatusOf(path));
  if (!replaced.complete) SetLastError(replaced.error);
  return replaced.complete;
}

namespace {

constexpr char kOldSuffix[] = ".old";

/// Others may not rename the file while it is open here: no line ends up in a file that is being replaced. The rename
/// keeps the file busy for a moment, hence the attempts.
win::FileHandle OpenForAppending(const char* path) noexcept {
  for (int attempt = 1;; ++attempt) {
    win::FileHandle file(CreateFileA(path, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                     nullptr));
    if (file || GetLastError() != ERROR_SHARING_VIOLATION || attempt == 50) return file;
    Sleep(2);
  }
}

/// True when `length` more bytes would take a file that is not empty beyond its maximum.
bool IsFull(const LogFile& file, std::uint32_t length) noexcept {
  WIN32_FILE_ATTRIBUTE_DATA status;
  if (!GetFileAttributesExA(file.path, GetFileExInfoStandard, &status)) return false;
  const std::uint64_t size = (std::uint64_t{status.nFileSizeHigh} << 32) | status.nFileSizeLow;
  return size > 0 && size + length > file.maximumSize;
}

void Rotate(const char* path) noexcept {
  char old[MAX_PATH];
  std::snprintf(old, sizeof old, "%s%s", path, kOldSuffix);
  MoveFileExA(path, old, MOVEFILE_REPLACE_EXISTING);
}

}  // namespace

bool LocateLog(const char* path, std::size_t size, std::uint32_t maximumSize, LogFile& file) noexcept {
  if (maximumSize == 0 || path[0] == '\0' || std::memchr(path, '\0', size) == nullptr) return false;
  char full[MAX_PATH];
  const DWORD length = GetFullPathNameA(path, sizeof full, full, nullptr);
  if (length == 0 || length + sizeof kOldSuffix > sizeof full) return false;
  std::memcpy(file.path, full, sizeof full);
  file.maximumSize = maximumSize;
  return true;
}

bool AppendLine(const LogFile& file, const char* line, std::uint32_t length) noexcept {
  const SharedFileLock lock(file.path, 1000);
  if (lock.Held() && IsFull(file, length)) Rotate(file.path);
  const win::FileHandle output = OpenForAppending(file.path);
  DWORD written = 0;
  return output && WriteFile(output.Get(), line, length, &written, nullptr) && written == length;
}

bool LogCall(const std::string& text) {
  LogFile file;
  const std::string path = WithExtension(".log");
  if (!LocateLog(path.c_str(), path.size() + 1, 64 * 1024, file)) return false;
  SYSTEMTIME now;
  GetLocalTime(&now);
  char head[64];
  std::snprintf(head, sizeof head, "%04d/%02d/%02d %02d:%02d:%02d.%03d;%lu;", now.wYear, now.wMonth, now.wDay,
                now.wHour, now.wMinute, now.wSecond, now.wMilliseconds, GetCurrentProcessId());
  const std::string line = head + OwnPath() + ";" + text + "\r\n";
  return AppendLine(file, line.c_str(), static_cast<std::uint32_t>(line.size()));
}

Result Logged(const char* function, Result result, const std::string& detail) {
  const bool logged = LogCall(std::string(function) + ";" + std::to_string(result) + ";" + detail);
  return logged || result != kSuccess ? result : kNotLogged;
}

std::optional<std::string> ReadSetting(const char* section, const char* key, std::size_t longest) {
  char value[kLongestSetting + 2];  // Windows cuts longer values: one extra byte shows it
  const std::string path = WithExtension(".ini");
  const std::size_t length = GetPrivateProfileStringA(section, key, "", value, sizeof value, path.c_str());
  return length > longest ? std::nullopt : std::optional(std::string(value, length));
}

std::optional<std::int32_t> ReadNumber(const char* section, const char* key, std::int32_t fallback, std::int32_t lowest,
                                       std::int32_t highest) {
  const auto text = ReadSetting(section, key);
  if (!text) return std::nullopt;
  if (text->empty()) return fallback;
  const auto number = ParseNumber(*text, lowest, highest);
  return number ? std::optional(static_cast<std::int32_t>(*number)) : std::nullopt;
}

}  // namespace devkit
