// A fake trace library that keeps its calls as lines of text.
#include "TvLogSys.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

constexpr uint32_t kHandle = 0x1234;

char g_calls[1 << 20];
size_t g_used = 0;
const char* g_failing = "";

int Record(const char* function, const char* format, va_list arguments) {
  auto append = [](int length) {
    if (length > 0) g_used += static_cast<size_t>(length);
    if (g_used >= sizeof g_calls) g_used = sizeof g_calls - 1;
  };
  append(snprintf(g_calls + g_used, sizeof g_calls - g_used, "%s: ", function));
  append(vsnprintf(g_calls + g_used, sizeof g_calls - g_used, format, arguments));
  append(snprintf(g_calls + g_used, sizeof g_calls - g_used, "\n"));
  return std::strcmp(function, g_failing) == 0 ? 1 : 0;
}

int Note(const char* function, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int result = Record(function, format, arguments);
  va_end(arguments);
  return result;
}

}  // namespace

extern "C" __declspec(dllexport) const char* FakeLog() { return g_calls; }
extern "C" __declspec(dllexport) void FakeClear() {
  g_used = 0;
  g_calls[0] = '\0';
}
extern "C" __declspec(dllexport) void FakeFail(const char* function) { g_failing = function; }

int LogSys_InitializeLogSystem(uint32_t* handle) {
  *handle = kHandle;
  return Note("initialize", "");
}

int LogSys_FinalizeLogSystem(uint32_t handle) { return Note("finalize", "%x", static_cast<unsigned>(handle)); }

int LogSys_ConfigureLogFile(uint32_t handle, const LogFileSettings* settings) {
  return Note("configure", "%x %u %s %u %u %u", static_cast<unsigned>(handle), static_cast<unsigned>(settings->level),
              settings->path, static_cast<unsigned>(settings->maximumSize), static_cast<unsigned>(settings->optionA),
              static_cast<unsigned>(settings->optionB));
}

int LogSys_ConfigureLogDebugMsg(uint32_t, const uint32_t*) { return Note("configure debugger", ""); }

int LogSys_DumpLogFile(uint32_t, uint32_t, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Record("line", format, arguments);
  va_end(arguments);
  return 0;
}

int LogSys_DumpLogDebugMsg(uint32_t, uint32_t, const char*, ...) { return Note("debugger line", ""); }
