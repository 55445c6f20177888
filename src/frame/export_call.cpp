#include "frame/export_call.h"

namespace frame {

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
  Trace(kInfo, traceName, "Function end. Return code (%i)", static_cast<int>(result));
  DebugTrace("<<< %s (Res:%i)", traceName, static_cast<int>(result));
  return result;
}

}  // namespace frame
