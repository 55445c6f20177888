// The log sink of a caller: wide-character trace lines of the routines that receive one. A null sink writes nothing.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "KEResults.h"

namespace policy {

/// A log that the caller implements. Its functions must not throw; the order of the slots is fixed.
class ILogSink {
 public:
  /// Never called.
  virtual std::uint32_t KE_API FirstSlot() = 0;

  /// Stores the highest level to write; 0 on success.
  virtual std::uint32_t KE_API GetLevel(std::uint32_t* level) = 0;

  /// Writes one trace line.
  virtual void KE_API Write(std::uint32_t level, std::uint32_t flag, const wchar_t* function, const wchar_t* text) = 0;

  /// Writes one error line, with the routine's result and the error code of Windows.
  virtual void KE_API WriteError(std::uint32_t level, std::uint32_t flag, const wchar_t* function, std::uint32_t result,
                                 std::uint32_t systemError, const wchar_t* text) = 0;

 protected:
  ~ILogSink() = default;
};

/// Levels of sink lines; a higher number is more verbose.
enum SinkLevel : std::uint32_t {
  kSinkErrors = 20,
  kSinkInfo = 30,
  kSinkResults = 40,
  kSinkCalls = 50,  // "Function start" and "Function end"
};

/// The flag of every line.
constexpr std::uint32_t kSinkFlag = 1;

/// Writes one line when `level` is at most the sink's level. Texts are cut at 4095 characters; wide texts are formatted
/// with "%ls". Keeps the last-error value.
void SinkTrace(ILogSink* sink, std::uint32_t level, std::uint32_t flag, const wchar_t* function, const wchar_t* format,
               ...) noexcept;

/// Writes one error line: always at the levels 0, 10 and 20, else as `SinkTrace` does.
void SinkError(ILogSink* sink, std::uint32_t level, std::uint32_t flag, const wchar_t* function, std::uint32_t result,
               std::uint32_t systemError, const wchar_t* format, ...) noexcept;

/// One call of a routine: the constructor writes "Function start", `End` the result with "Function end".
class SinkCall {
 public:
  /// `function` is plain ASCII, as `__func__` is.
  SinkCall(ILogSink* sink, const char* function)
      : sink_(sink), name_(function, function + std::char_traits<char>::length(function)) {
    SinkTrace(sink_, kSinkCalls, kSinkFlag, Name(), L"Function start");
  }

  /// The function, as the sink receives it.
  const wchar_t* Name() const noexcept { return name_.c_str(); }

  void Parameter(const wchar_t* name, const wchar_t* text) const noexcept {
    SinkTrace(sink_, kSinkInfo, kSinkFlag, Name(), L"Parameter (%ls): %ls", name, text ? text : L"(null)");
  }
  void Parameter(const wchar_t* name, int number) const noexcept {
    SinkTrace(sink_, kSinkInfo, kSinkFlag, Name(), L"Parameter (%ls): %i", name, number);
  }

  /// Writes one error line with a message, the object it concerns and the error code of Windows. Returns `result`.
  std::uint32_t Fail(std::uint32_t result, long systemError, const wchar_t* message,
                     const wchar_t* object) const noexcept {
    SinkError(sink_, kSinkErrors, kSinkFlag, Name(), result, static_cast<std::uint32_t>(systemError), L"%ls (%ls): %li",
              message, object, systemError);
    return result;
  }

  /// Returns `result`.
  std::uint32_t End(std::uint32_t result, const wchar_t* format = L"Return code (%i)") const noexcept {
    SinkTrace(sink_, kSinkResults, kSinkFlag, Name(), format, result);
    SinkTrace(sink_, kSinkCalls, kSinkFlag, Name(), L"Function end");
    return result;
  }

  /// Ends with 0 when `systemError` is 0; else with `failure`, which `Fail` writes.
  std::uint32_t Finish(std::uint32_t failure, long systemError, const wchar_t* message,
                       const wchar_t* object) const noexcept {
    return End(systemError == ERROR_SUCCESS ? 0 : Fail(failure, systemError, message, object));
  }

 private:
  ILogSink* sink_;
  std::wstring name_;
};

/// The result of `LanzarProceso` for every failure; the error code of Windows is in the sink's line.
constexpr std::uint32_t kLaunchFailed = 40;

/// Starts `program`, whose path is quoted, with `parameters` (null for none), and with `wait` waits up to `timeout`
/// milliseconds for its end. 0, or `kLaunchFailed` when it could not be started or has not ended in time, and keeps
/// running. Only the tests call it.
///
/// `started` may be null. Otherwise it receives the process's handles, which the caller closes; all zero after a
/// failure. `reserved` is not used.
std::uint32_t LanzarProceso(ILogSink* sink, const wchar_t* program, const wchar_t* parameters, const void* reserved,
                            bool wait, PROCESS_INFORMATION* started, DWORD timeout, DWORD creationFlags);

}  // namespace policy
