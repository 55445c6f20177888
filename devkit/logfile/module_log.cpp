#include "logfile/module_log.h"

#include <cstdio>

#include "logfile/log_file.h"
#include "sharedfile/module_path.h"
#include "win/owner.h"

namespace logfile {
namespace {

constexpr std::uint32_t kMaximumSize = 64 * 1024;

bool LocateLog(LogFile& file) noexcept {
  char path[MAX_PATH];
  return sharedfile::FindWithExtension(".log", path) && Locate(path, sizeof path, kMaximumSize, file);
}

}  // namespace

bool LogBesideModule(const char* text) noexcept {
  const win::KeptLastError keep;
  char module[MAX_PATH];
  LogFile file;
  if (!sharedfile::FindOwnPath(module) || !LocateLog(file)) return false;
  SYSTEMTIME now;
  GetLocalTime(&now);
  char line[1024];
  const int length = std::snprintf(line, sizeof line, "%04d/%02d/%02d %02d:%02d:%02d.%03d;%lu;%s;%s\r\n", now.wYear,
                                   now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds,
                                   GetCurrentProcessId(), module, text);
  return length > 0 && length < static_cast<int>(sizeof line) && Append(file, line, static_cast<std::uint32_t>(length));
}

}  // namespace logfile
