// The shape of an export: trace scope, "Function start", the body inside the only catch-all, a line for a failure, the
// end line with the result.
#pragma once

#include "KELUtils.h"
#include "frame/trace.h"

namespace frame {

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

}  // namespace frame
