// Tracing of exports and inner routines. Nothing here throws or changes the last-error value.
#pragma once

#include "KEResults.h"

#if defined(__clang__)
#define KE_PRINTF_LIKE(text, arguments) __attribute__((format(printf, text, arguments)))
#elif defined(__MINGW32__)
#define KE_PRINTF_LIKE(text, arguments) __attribute__((format(gnu_printf, text, arguments)))
#else
#define KE_PRINTF_LIKE(text, arguments)
#endif
namespace trace {

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

/// Keeps the trace library loaded for its lifetime. Every export has one.
class TraceScope {
 public:
  TraceScope() noexcept;
  ~TraceScope();
  TraceScope(const TraceScope&) = delete;
  TraceScope& operator=(const TraceScope&) = delete;

 private:
  bool counted_ = false;
};

// The shape of an export: trace scope, "Function start", the body inside the only catch-all, a line for a failure, the
// end line with the result.

/// The running export, as its body sees it.
struct Export {
  const char* name;  // the name it traces under
};

/// Runs `body(context, self)` in the shape of an export. An exception becomes KE_EXCEPTION. A result other than
/// KE_SUCCESS is a failure and is traced at level 20.
KE_RESULT RunExport(const char* traceName, KE_RESULT (*body)(void* context, Export& self), void* context) noexcept;

/// Runs `body(self)` in the shape of an export that traces under `traceName`.
template <typename Body>
KE_RESULT ExportCall(const char* traceName, Body body) noexcept {
  return RunExport(
      traceName, [](void* context, Export& self) -> KE_RESULT { return (*static_cast<Body*>(context))(self); }, &body);
}

/// Runs one step of an export whose other steps do not depend on it: the result of `step()`, KE_EXCEPTION for an
/// exception.
template <typename Step>
KE_RESULT RunStep(Step step) noexcept {
  try {
    return step();
  } catch (...) {
    return KE_EXCEPTION;
  }
}

}  // namespace trace
