#include "trace/log_system.h"

#include <cstdio>
#include <cstring>
#include <iterator>

#include "text/text.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/profile.h"

namespace trace {

namespace {

CL_LOG_SYSTEM g_logSystem;

// A text of the section LOG; `fallback` when the file or the key is missing.
struct SettingText {
  SettingText(const char* file, const char* key, const char* fallback) noexcept {
    win::ReadProfile(file, "LOG", key, fallback, text, sizeof text);
  }
  char text[255];
};

// The local time as "yyyy/mm/dd hh:mm:ss.mmm"; empty if it does not fit.
void FormatNow(char (&text)[24]) noexcept {
  SYSTEMTIME now;
  GetLocalTime(&now);
  const int length = snprintf(text, sizeof text, "%04d/%02d/%02d %02d:%02d:%02d.%03d", now.wYear, now.wMonth, now.wDay,
                              now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
  if (length < 0 || length >= static_cast<int>(sizeof text)) text[0] = '\0';
}

}  // namespace

CL_LOG_SYSTEM& CL_LOG_SYSTEM::Instance() noexcept { return g_logSystem; }

int CL_LOG_SYSTEM::Configure(const char* moduleName, const char* settingsFile, const char* libraryDirectory,
                             const char* logDirectory, bool* counted) noexcept {
  *counted = false;
  if (text::IsBlank(moduleName) || text::IsBlank(settingsFile) || text::IsBlank(libraryDirectory) ||
      text::IsBlank(logDirectory))
    return -1;
  const SettingText level(settingsFile, "LEVELLOG", "0");
  const SettingText size(settingsFile, "LOGFILESIZE", "3072");
  const auto record = MakeLogConfiguration(moduleName, libraryDirectory, logDirectory, LogLevelFromText(level.text),
                                           LogSizeFromText(size.text), win::IsLeadByte);

  const win::LockGuard hold(traceLock_);
  // Lines are written without the lock: an unchanged record is left alone.
  if (record && IsAcceptable(*record) && *record != configuration_) configuration_ = *record;
  return Enabled() && LoadDependences(counted) ? 0 : -1;
}

bool CL_LOG_SYSTEM::LoadDependences(bool* counted) noexcept {
  if (library_) {
    *counted = true;
    ++references_;
    DebugMessage("Log System LD - %s - %d", configuration_.moduleName, references_);
    return true;
  }
  if (!LoadLibraryAndBind()) return false;
  *counted = true;
  references_ = 1;
  DebugMessage("Log System LD LL - %s - %d", configuration_.moduleName, references_);
  if (!InitializeLibrary()) {
    // The library stays loaded until this use ends.
    DebugMessage("Log System LD IS X - %s", configuration_.moduleName);
    return false;
  }
  DebugMessage("Log System LD IS H - %s - 0x%08X", configuration_.moduleName, logHandle_);
  Trace(kInfo, "CL_LOG_SYSTEM::LoadDependences", "System initialized by (%s)", configuration_.moduleName);
  return true;
}

bool CL_LOG_SYSTEM::LoadLibraryAndBind() noexcept {
  char path[sizeof configuration_.libraryDirectory + sizeof kTraceLibrary];
  const char* directory = configuration_.libraryDirectory;
  const bool separated = text::EndsInBackslash(directory, win::IsLeadByte);
  snprintf(path, sizeof path, "%s%s%s", directory, separated ? "" : "\\", kTraceLibrary);

  library_ = win::LoadModule(path);
  if (!library_) library_ = win::LoadModule(kTraceLibrary);
  if (!library_) return false;
  EntryPoints found{};
  if (!win::BindNames(library_.Get(), &found, EntryPoints::Names())) {
    library_.Reset();
    references_ = 0;
    DebugMessage("Log System LD LL X - %s - %d", configuration_.moduleName, references_);
    return false;
  }
  entryPoints_ = found;
  return true;
}

bool CL_LOG_SYSTEM::InitializeLibrary() noexcept {
  if (entryPoints_.LogSys_InitializeLogSystem(&logHandle_) != 0) return false;
  bool ready = true;
  if (configuration_.fileOutput != 0) {
    const LogFileSettings settings = ToFileSettings(configuration_);
    ready = entryPoints_.LogSys_ConfigureLogFile(logHandle_, &settings) == 0;
  }
  if (configuration_.debuggerOutput != 0) {
    ready = entryPoints_.LogSys_ConfigureLogDebugMsg(logHandle_, &configuration_.level) == 0 && ready;
  }
  return ready;
}

void CL_LOG_SYSTEM::FreeDependences(bool counted) noexcept {
  const win::LockGuard hold(traceLock_);
  if (!library_) {
    references_ = 0;
    DebugMessage("Log System FD NLD - %s - %d", configuration_.moduleName, references_);
    return;
  }
  if (!counted) return;
  if (--references_ > 0) {
    DebugMessage("Log System FD - %s - %d", configuration_.moduleName, references_);
    return;
  }
  FinalizeLibrary();
  library_.Reset();
  entryPoints_ = {};
  DebugMessage("Log System FD FL - %s - %d", configuration_.moduleName, references_);
}

void CL_LOG_SYSTEM::FinalizeLibrary() noexcept {
  if (logHandle_ == 0) return;
  DebugMessage("Log System FD FS H - %s - 0x%08X", configuration_.moduleName, logHandle_);
  entryPoints_.LogSys_FinalizeLogSystem(logHandle_);
  logHandle_ = 0;
  // Reaches the library after its end, with handle 0, and is the library's to drop.
  Trace(kInfo, "CL_LOG_SYSTEM::FreeDependences", "Log system free by (%s)", configuration_.moduleName);
}

void CL_LOG_SYSTEM::DumpLine(unsigned level, const char* function, const char* description) noexcept {
  char date[24];
  FormatNow(date);
  const int process = static_cast<int>(GetCurrentProcessId());
  const int thread = static_cast<int>(GetCurrentThreadId());
  if (const auto dump = entryPoints_.LogSys_DumpLogFile; dump != nullptr && configuration_.fileOutput != 0) {
    dump(logHandle_, level, "%s;%d;%d;%d;%s;%s;\"%s\"\r\n", date, process, thread, level, configuration_.moduleName,
         function, description);
  }
  if (const auto dump = entryPoints_.LogSys_DumpLogDebugMsg; dump != nullptr && configuration_.debuggerOutput != 0) {
    dump(logHandle_, level, "[Date: %s][PID: %d][TID: %d][Level: %d][Module: %s][Function: %s][Description: %s]\r\n",
         date, process, thread, level, configuration_.moduleName, function, description);
  }
}

}  // namespace trace
