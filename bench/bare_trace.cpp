#include "bench/bare_trace.h"

#include <cstdio>
#include <cstring>

namespace bench {
namespace {

template <typename Function>
void Find(HMODULE module, const char* name, Function& function) {
  function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// The debugger's line of each step.
void Announce(const char* step) {
  char text[4096] = {};
  snprintf(text, sizeof text - 1, "Log System %s - %s - 0x%08X", step, "KELUtils", 1);
  OutputDebugStringA(text);
}

}  // namespace

BareTrace::BareTrace(const std::string& directory)
    : settings_(directory + "\\KELUTILS.INI"),
      library_(directory + "\\..\\Common\\TvLogSys.dll"),
      log_(directory + "\\KELUtils.log") {}

void BareTrace::ReadSettings() const {
  char text[255];
  GetPrivateProfileStringA("LOG", "LEVELLOG", "0", text, sizeof text, settings_.c_str());
  GetPrivateProfileStringA("LOG", "LOGFILESIZE", "3072", text, sizeof text, settings_.c_str());
}

void BareTrace::OpenAgain() {
  ReadSettings();
  if (!module_) module_.Reset(LoadLibraryExA(library_.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module_) module_.Reset(LoadLibraryExA("TvLogSys.dll", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (module_) Announce("LD");
}

void BareTrace::CloseAgain() { Announce("FD"); }

void BareTrace::Open() {
  LogFileSettings settings{};
  ReadSettings();
  module_.Reset(LoadLibraryExA(library_.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module_) module_.Reset(LoadLibraryExA("TvLogSys.dll", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module_) return;
  Find(module_.Get(), "LogSys_InitializeLogSystem", functions_.initialize);
  Find(module_.Get(), "LogSys_FinalizeLogSystem", functions_.finalize);
  Find(module_.Get(), "LogSys_ConfigureLogFile", functions_.configureFile);
  Find(module_.Get(), "LogSys_ConfigureLogDebugMsg", functions_.configureDebugger);
  Find(module_.Get(), "LogSys_DumpLogFile", functions_.dumpFile);
  Find(module_.Get(), "LogSys_DumpLogDebugMsg", functions_.dumpDebugger);
  Announce("LD LL");
  functions_.initialize(&handle_);
  settings.maximumSize = 3072 * 1024;
  settings.optionA = settings.optionB = 1;
  std::memcpy(settings.path, log_.c_str(), log_.size() + 1);
  functions_.configureFile(handle_, &settings);
  Announce("LD IS H");
  Line("CL_LOG_SYSTEM::LoadDependences", "System initialized by (KELUtils)");
}

void BareTrace::Line(const char* function, const char* description) {
  char text[4096], date[24];
  SYSTEMTIME now;
  snprintf(text, sizeof text, "%s", description);
  GetLocalTime(&now);
  snprintf(date, sizeof date, "%04d/%02d/%02d %02d:%02d:%02d.%03d", now.wYear, now.wMonth, now.wDay, now.wHour,
           now.wMinute, now.wSecond, now.wMilliseconds);
  const int process = static_cast<int>(GetCurrentProcessId()), thread = static_cast<int>(GetCurrentThreadId());
  if (!module_) return;
  functions_.dumpFile(handle_, 10, "%s;%d;%d;%d;%s;%s;\"%s\"\r\n", date, process, thread, 10, "KELUtils", function,
                      text);
}

void BareTrace::Close() {
  if (!module_) return Announce("FD NLD");
  Announce("FD FS H");
  functions_.finalize(handle_);
  handle_ = 0;
  Line("CL_LOG_SYSTEM::FreeDependences", "Log system free by (KELUtils)");
  module_.Reset();
  Announce("FD FL");
}

}  // namespace bench
