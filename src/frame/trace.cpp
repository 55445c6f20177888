#include "frame/trace.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>

#include "frame/log_system.h"
#include "frame/module.h"
#include "frame/paths.h"
#include "win/last_error.h"

namespace frame {
namespace {

constexpr char kModuleName[] = "KELUtils";

}  // namespace

void Trace(TraceLevel level, const char* function, const char* format, ...) noexcept {
  CL_LOG_SYSTEM& log = CL_LOG_SYSTEM::Instance();
  if (!log.Enabled()) return;
  const win::KeptLastError keep;
  char description[4096];
  va_list arguments;
  va_start(arguments, format);
  vsnprintf(description, sizeof description, format, arguments);
  va_end(arguments);
  log.DumpLine(level, function, description);
}

void DebugMessage(const char* format, ...) noexcept {
  const win::KeptLastError keep;
  try {
    char text[4096] = {};
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text - 1, format, arguments);
    va_end(arguments);
    OutputDebugStringA(text);
  } catch (...) {
    DebugTrace("Exception in OutputDebugMsg");
  }
}

void DebugTrace(const char*, ...) noexcept {}

TraceScope::TraceScope() noexcept {
  const win::KeptLastError keep;
  try {
    const std::string directory(KeptModuleDirectory());
    CL_LOG_SYSTEM::Instance().Configure(kModuleName, FileIn(directory, kSettingsFile).c_str(),
                                        CommonDirectory(directory).c_str(), directory.c_str(), &counted_);
  } catch (...) {
    // Without memory for three paths there is no trace of this call.
  }
}

TraceScope::~TraceScope() {
  const win::KeptLastError keep;
  CL_LOG_SYSTEM::Instance().FreeDependences(counted_);
}

}  // namespace frame
