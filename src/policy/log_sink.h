// The caller's own log: wide-character trace lines of routines that are handed a sink. A null sink means silence.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "KEResults.h"

namespace policy {

/// A log that the caller supplies. Its functions must not throw; the order of the slots is fixed.
class ILogSink {
 public:
  /// Never called.
  virtual std::uint32_t KE_API FirstSlot() = 0;

  /// Stores the highest level that is wanted; 0 on success.
  virtual std::uint32_t KE_API GetLevel(std::uint32_t* level) = 0;

  /// Takes one trace line.
  virtual void KE_API Write(std::uint32_t level, std::uint32_t flag, const wchar_t* function, const wchar_t* text) = 0;

  /// Takes one error line, with the routine's result and the platform's error code.
  virtual void KE_API WriteError(std::uint32_t level, std::uint32_t flag, const wchar_t* function, std::uint32_t result,
                                 std::uint32_t systemError, const wchar_t* text) = 0;

 protected:
  ~ILogSink() = default;
};

/// Levels of sink lines; a wider number is more verbose.
enum SinkLevel : std::uint32_t {
  kSinkErrors = 20,
  kSinkInfo = 30,
  kSinkResults = 40,
  kSinkCalls = 50,  // "Function start" and "Function end"
};

/// The flag that goes with every line.
constexpr std::uint32_t kSinkFlag = 1;

/// The name under which a routine writes to its sink, for the length of the routine.
class SinkFunction {
 public:
  /// `name` is plain ASCII, as `__func__` is.
  explicit SinkFunction(const char* name) : name_(name, name + std::char_traits<char>::length(name)) {}

  const wchar_t* Name() const noexcept { return name_.c_str(); }

 private:
  std::wstring name_;
};

/// Writes one line when the sink tells its level and that is at least `level`. Texts are cut at 4095 characters; wide
/// texts are formatted with "%ls". Keeps the last-error value.
void SinkTrace(ILogSink* sink, std::uint32_t level, std::uint32_t flag, const wchar_t* function, const wchar_t* format,
               ...) noexcept;

/// Writes one error line: always at the levels 0, 10 and 20, else as `SinkTrace` does.
void SinkError(ILogSink* sink, std::uint32_t level, std::uint32_t flag, const wchar_t* function, std::uint32_t result,
               std::uint32_t systemError, const wchar_t* format, ...) noexcept;

// One call of a routine, as its caller's log sink sees it.

/// Writes "Function start" at once, and the result with "Function end" through `End`.
class SinkCall {
 public:
  SinkCall(ILogSink* sink, const char* function) : sink_(sink), function_(function) {
    SinkTrace(sink_, kSinkCalls, kSinkFlag, function_.Name(), L"Function start");
  }

  void Parameter(const wchar_t* name, const wchar_t* text) const noexcept {
    SinkTrace(sink_, kSinkInfo, kSinkFlag, function_.Name(), L"Parameter (%ls): %ls", name, text ? text : L"(null)");
  }
  void Parameter(const wchar_t* name, int number) const noexcept {
    SinkTrace(sink_, kSinkInfo, kSinkFlag, function_.Name(), L"Parameter (%ls): %i", name, number);
  }

  /// One line: what was done to what.
  void Note(const wchar_t* what, const wchar_t* object) const noexcept {
    SinkTrace(sink_, kSinkInfo, kSinkFlag, function_.Name(), L"%ls: %ls", what, object);
  }

  /// One error line: what failed on what, with the platform's error. Returns `result`.
  std::uint32_t Fail(std::uint32_t result, long systemError, const wchar_t* what,
                     const wchar_t* object) const noexcept {
    SinkError(sink_, kSinkErrors, kSinkFlag, function_.Name(), result, static_cast<std::uint32_t>(systemError),
              L"%ls (%ls): %li", what, object, systemError);
    return result;
  }

  std::uint32_t End(std::uint32_t result) const noexcept {
    SinkTrace(sink_, kSinkResults, kSinkFlag, function_.Name(), L"Return code (%i)", result);
    SinkTrace(sink_, kSinkCalls, kSinkFlag, function_.Name(), L"Function end");
    return result;
  }

 private:
  ILogSink* sink_;
  SinkFunction function_;
};

// The launcher of programs for routines that write to a sink.

/// Result of `LanzarProceso` for every failure; the platform's error is in the sink's line.
constexpr std::uint32_t kLaunchFailed = 40;

/// Starts `program`, whose path is put in quotes, with `parameters` (null for none), and with `wait` waits up to
/// `timeout` milliseconds for its end. 0, or `kLaunchFailed` when it could not be started or has not ended in time; it
/// is then left running.
///
/// `started` may be null. Otherwise it receives the process's handles, which the caller closes; all zero after a
/// failure. `reserved` is not used.
std::uint32_t LanzarProceso(ILogSink* sink, const wchar_t* program, const wchar_t* parameters, const void* reserved,
                            bool wait, PROCESS_INFORMATION* started, DWORD timeout, DWORD creationFlags);

}  // namespace policy
