// The caller's own log: wide-character trace lines of routines that are handed a sink. A null sink means silence.
#pragma once

#include <cstdint>
#include <string>

#include "KELUtils.h"

namespace frame {

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

}  // namespace frame
