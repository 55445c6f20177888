#include "trace/trace.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>

#include "text/paths.h"
#include "trace/log_system.h"
#include "win/module.h"
#include "win/owner.h"

namespace trace {

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
    const std::string directory(win::KeptModuleDirectory());
    CL_LOG_SYSTEM::Instance().Configure(kModuleName, text::FileIn(directory, text::kSettingsFile).c_str(),
                                        (directory + "\\..\\Common").c_str(), directory.c_str(), &counted_);
  } catch (...) {
    // Without memory for three paths there is no trace of this call.
  }
}

TraceScope::~TraceScope() {
  const win::KeptLastError keep;
  CL_LOG_SYSTEM::Instance().FreeDependences(counted_);
}

namespace {

void TraceFailure(const char* traceName, KE_RESULT result) noexcept {
  switch (result) {
    case KE_SUCCESS:
      return;
    case KE_MISSING_ARGUMENT:
    case KE_BUFFER_TOO_SMALL:
    case KE_OUT_OF_RANGE:
      Trace(kDetail, traceName, "Wrong parameters");
      return;
    default:
      Trace(kDetail, traceName, "Error (%i) return by function (%s)", static_cast<int>(result), traceName);
  }
}

}  // namespace

KE_RESULT RunExport(const char* traceName, KE_RESULT (*body)(void* context, Export& self), void* context) noexcept {
  const TraceScope scope;
  Trace(kInfo, traceName, "Function start");
  DebugTrace(">>> %s", traceName);
  KE_RESULT result = KE_EXCEPTION;
  try {
    Export self{traceName};
    result = body(context, self);
  } catch (...) {
    result = KE_EXCEPTION;
  }
  TraceFailure(traceName, result);
  Trace(kInfo, traceName, "Function end. Return code (%i)", static_cast<int>(result));
  DebugTrace("<<< %s (Res:%i)", traceName, static_cast<int>(result));
  return result;
}

}  // namespace trace
