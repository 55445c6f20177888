#include "frame/log_sink.h"

#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <iterator>

#include "win/last_error.h"

namespace frame {
namespace {

struct LineText {
  LineText(const wchar_t* format, va_list arguments) noexcept {
    // The last character stays zero: a text that fills the rest is not terminated by the platform.
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

}  // namespace frame
