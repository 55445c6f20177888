#include "logfile/module_log.h"

#include <cstdio>
#include <cstring>

#include "logfile/log_file.h"
#include "win/last_error.h"

namespace logfile {
namespace {

constexpr std::uint32_t kMaximumSize = 64 * 1024;
constexpr char kExtension[] = ".log";

/// The full path of the DLL that holds this code.
bool FindOwnPath(char (&path)[MAX_PATH]) noexcept {
  HMODULE module = nullptr;
  constexpr DWORD kByAddress = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
  if (!GetModuleHandleExA(kByAddress, reinterpret_cast<const char*>(&FindOwnPath), &module)) return false;
  const DWORD length = GetModuleFileNameA(module, path, sizeof path);
  return length > 0 && length < sizeof path;
}

bool LocateLog(const char* modulePath, LogFile& file) noexcept {
  const char* const extension = std::strrchr(modulePath, '.');
  const int stem = static_cast<int>(extension ? extension - modulePath : std::strlen(modulePath));
  char path[MAX_PATH + sizeof kExtension];
  std::snprintf(path, sizeof path, "%.*s%s", stem, modulePath, kExtension);
  return Locate(path, sizeof path, kMaximumSize, file);
}

}  // namespace

bool LogBesideModule(const char* text) noexcept {
  const win::KeptLastError keep;
  char module[MAX_PATH];
  LogFile file;
  if (!FindOwnPath(module) || !LocateLog(module, file)) return false;
  SYSTEMTIME now;
  GetLocalTime(&now);
  char line[1024];
  const int length = std::snprintf(line, sizeof line, "%04d/%02d/%02d %02d:%02d:%02d.%03d;%lu;%s;%s\r\n", now.wYear,
                                   now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds,
                                   GetCurrentProcessId(), module, text);
  return length > 0 && length < static_cast<int>(sizeof line) && Append(file, line, static_cast<std::uint32_t>(length));
}

}  // namespace logfile
