#include "frame/lanzar_proceso.h"

#include <string>

#include "win/process.h"

namespace frame {
namespace {

std::wstring CommandLine(const wchar_t* program, const wchar_t* parameters) {
  std::wstring line = L"\"" + std::wstring(program) + L"\"";
  if (parameters) line.append(L" ").append(parameters);
  return line;
}

}  // namespace

std::uint32_t LanzarProceso(ILogSink* sink, const wchar_t* program, const wchar_t* parameters, const void*, bool wait,
                            PROCESS_INFORMATION* started, DWORD timeout, DWORD creationFlags) {
  const SinkFunction function(__func__);
  const wchar_t* const shown = parameters ? parameters : L"(null)";
  SinkTrace(sink, kSinkCalls, kSinkFlag, function.Name(), L"Function start");
  SinkTrace(sink, kSinkInfo, kSinkFlag, function.Name(), L"Launching program (\"%ls\" %ls): %d", program, shown,
            creationFlags);

  win::Process process = win::StartProcess(CommandLine(program, parameters), creationFlags);
  std::uint32_t result = 0;
  const auto fail = [&](const wchar_t* call, DWORD error) {
    process = {};
    result = kLaunchFailed;
    SinkError(sink, kSinkErrors, kSinkFlag, function.Name(), result, error,
              L"Error launching program (\"%ls\" \"%ls\") - (%ls): %d", program, shown, call, error);
  };
  if (!process) {
    fail(L"CreateProcess", GetLastError());
  } else if (wait) {
    const DWORD waited = process.Wait(timeout);
    if (waited != WAIT_OBJECT_0) fail(L"WaitForSingleObject", waited);
  }
  if (started) *started = process.Release();

  SinkTrace(sink, kSinkResults, kSinkFlag, function.Name(), L"Return code (0x%x)", result);
  SinkTrace(sink, kSinkCalls, kSinkFlag, function.Name(), L"Function end");
  return result;
}

}  // namespace frame
