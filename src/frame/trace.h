// Tracing: what exports and inner routines write about themselves. Nothing here throws or changes the last-error value.
#pragma once

#if defined(__MINGW32__)
#define KE_PRINTF_LIKE(text, arguments) __attribute__((format(gnu_printf, text, arguments)))
#else
#define KE_PRINTF_LIKE(text, arguments)
#endif

namespace frame {

/// Levels of trace lines; which of them are kept is set in KELUTILS.INI.
enum TraceLevel : unsigned {
  kAlways = 0,   // a sibling module could not be loaded
  kInfo = 10,    // start, end and information
  kDetail = 20,  // errors and details
};

/// Writes one line to the log of the open scope; descriptions are cut at 4095 characters. Without an open scope, or
/// without the trace library, it does nothing.
void Trace(TraceLevel level, const char* function, const char* format, ...) noexcept KE_PRINTF_LIKE(3, 4);

/// Sends a text, cut at 4094 characters, to the debugger: the trace system's own diagnostics.
void DebugMessage(const char* format, ...) noexcept KE_PRINTF_LIKE(1, 2);

/// The silent second sink: takes the start and end of every export and the exceptions of attach and detach, and
/// discards them.
void DebugTrace(const char* format, ...) noexcept KE_PRINTF_LIKE(1, 2);

/// Keeps the trace library loaded while it lives. One stands in every export.
class TraceScope {
 public:
  TraceScope() noexcept;
  ~TraceScope();
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;

 private:
  bool counted_ = false;
};

}  // namespace frame
