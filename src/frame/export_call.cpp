#include "frame/export_call.h"

namespace frame {
namespace {

void TraceFailure(const char* traceName, KE_RESULT result) noexcept {
  switch (result) {
    case KE_SUCCESS:
      return;
    case KE_MISSING_ARGUMENT:
    case KE_BUFFER_TOO_SMALL:
    case KE_OUT_OF_RANGE:
      Trace(kDetail, traceName, "Wrong parameters");
      return;
    default:
      Trace(kDetail, traceName, "Error (%i) return by function (%s)", static_cast<int>(result), traceName);
  }
}

}  // namespace

KE_RESULT RunExport(const char* traceName, KE_RESULT (*body)(void* context, Export& self), void* context) noexcept {
  const TraceScope scope;
  Trace(kInfo, traceName, "Function start");
  DebugTrace(">>> %s", traceName);
  KE_RESULT result = KE_EXCEPTION;
  try {
    Export self{traceName};
    result = body(context, self);
  } catch (...) {
    result = KE_EXCEPTION;
  }
  TraceFailure(traceName, result);
  Trace(kInfo, traceName, "Function end. Return code (%i)", static_cast<int>(result));
  DebugTrace("<<< %s (Res:%i)", traceName, static_cast<int>(result));
  return result;
}

}  // namespace frame
