// One call of a routine, as its caller's log sink sees it.
#pragma once

#include <cstdint>

#include "frame/log_sink.h"

namespace gpscripts {

/// Writes "Function start" at once, and the result with "Function end" through `End`.
class SinkCall {
 public:
  SinkCall(frame::ILogSink* sink, const char* function) : sink_(sink), function_(function) {
    frame::SinkTrace(sink_, frame::kSinkCalls, frame::kSinkFlag, function_.Name(), L"Function start");
  }

  void Parameter(const wchar_t* name, const wchar_t* text) const noexcept {
    frame::SinkTrace(sink_, frame::kSinkInfo, frame::kSinkFlag, function_.Name(), L"Parameter (%ls): %ls", name,
                     text ? text : L"(null)");
  }
  void Parameter(const wchar_t* name, int number) const noexcept {
    frame::SinkTrace(sink_, frame::kSinkInfo, frame::kSinkFlag, function_.Name(), L"Parameter (%ls): %i", name, number);
  }

  /// One line: what was done to what.
  void Note(const wchar_t* what, const wchar_t* object) const noexcept {
    frame::SinkTrace(sink_, frame::kSinkInfo, frame::kSinkFlag, function_.Name(), L"%ls: %ls", what, object);
  }

  /// One error line: what failed on what, with the platform's error. Returns `result`.
  std::uint32_t Fail(std::uint32_t result, long systemError, const wchar_t* what,
                     const wchar_t* object) const noexcept {
    frame::SinkError(sink_, frame::kSinkErrors, frame::kSinkFlag, function_.Name(), result,
                     static_cast<std::uint32_t>(systemError), L"%ls (%ls): %li", what, object, systemError);
    return result;
  }

  std::uint32_t End(std::uint32_t result) const noexcept {
    frame::SinkTrace(sink_, frame::kSinkResults, frame::kSinkFlag, function_.Name(), L"Return code (%i)", result);
    frame::SinkTrace(sink_, frame::kSinkCalls, frame::kSinkFlag, function_.Name(), L"Function end");
    return result;
  }

 private:
  frame::ILogSink* sink_;
  frame::SinkFunction function_;
};

}  // namespace gpscripts
