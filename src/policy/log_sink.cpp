#include "policy/log_sink.h"

#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <iterator>
#include <utility>

#include "win/owner.h"
#include "win/process.h"

namespace policy {

namespace {

struct LineText {
  LineText(const wchar_t* format, va_list arguments) noexcept {
    // The last character stays zero: Windows does not terminate a text that fills the rest.
    _vsnwprintf(text, std::size(text) - 1, format, arguments);
  }
  wchar_t text[4096] = {};
};

bool IsWanted(ILogSink& sink, std::uint32_t level) noexcept {
  std::uint32_t highest = 0;
  return sink.GetLevel(&highest) == 0 && level <= highest;
}

bool IsAlwaysWritten(std::uint32_t level) noexcept { return level == 0 || level == 10 || level == 20; }

}  // namespace

void SinkTrace(ILogSink* sink, std::uint32_t level, std::uint32_t flag, const wchar_t* function, const wchar_t* format,
               ...) noexcept {
  if (sink == nullptr) return;
  const win::KeptLastError keep;
  if (!IsWanted(*sink, level)) return;
  va_list arguments;
  va_start(arguments, format);
  const LineText line(format, arguments);
  va_end(arguments);
  sink->Write(level, flag, function, line.text);
}

void SinkError(ILogSink* sink, std::uint32_t level, std::uint32_t flag, const wchar_t* function, std::uint32_t result,
               std::uint32_t systemError, const wchar_t* format, ...) noexcept {
  if (sink == nullptr) return;
  const win::KeptLastError keep;
  if (!IsAlwaysWritten(level) && !IsWanted(*sink, level)) return;
  va_list arguments;
  va_start(arguments, format);
  const LineText line(format, arguments);
  va_end(arguments);
  sink->WriteError(level, flag, function, result, systemError, line.text);
}

std::uint32_t LanzarProceso(ILogSink* sink, const wchar_t* program, const wchar_t* parameters, const void*, bool wait,
                            PROCESS_INFORMATION* started, DWORD timeout, DWORD creationFlags) {
  const SinkCall call(sink, __func__);
  const wchar_t* const shown = parameters ? parameters : L"(null)";
  SinkTrace(sink, kSinkInfo, kSinkFlag, call.Name(), L"Launching program (\"%ls\" %ls): %d", program, shown,
            creationFlags);
  std::wstring commandLine = L"\"" + std::wstring(program) + L"\"";
  if (parameters) commandLine.append(L" ").append(parameters);
  win::Process process = win::StartProcess(std::move(commandLine), creationFlags);
  std::uint32_t result = 0;
  const auto fail = [&](const wchar_t* step, DWORD error) {
    process = {};
    result = kLaunchFailed;
    SinkError(sink, kSinkErrors, kSinkFlag, call.Name(), result, error,
              L"Error launching program (\"%ls\" \"%ls\") - (%ls): %d", program, shown, step, error);
  };
  if (!process) {
    fail(L"CreateProcess", GetLastError());
  } else if (wait) {
    if (const DWORD waited = process.Wait(timeout); waited != WAIT_OBJECT_0) fail(L"WaitForSingleObject", waited);
  }
  if (started) *started = process.Release();
  return call.End(result, L"Return code (0x%x)");
}

}  // namespace policy
