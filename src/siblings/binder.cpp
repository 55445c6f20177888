#include "siblings/binder.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "text/paths.h"
#include "trace/trace.h"

namespace siblings {

namespace {

// Writes the path, cut if need be, and loads the module; empty when it cannot be loaded, with the last-error value.
win::ModuleHandle LoadFrom(const char* folder, const char* file, char (&path)[kSiblingPathSize]) noexcept {
  const int length = snprintf(path, sizeof path, "%s%s", folder ? folder : "", file);
  if (length >= static_cast<int>(sizeof path) || !text::IsFullPath(path)) {
    SetLastError(ERROR_BAD_PATHNAME);
    return {};
  }
  // The altered search path is for paths with backslashes alone.
  std::replace(path, path + length, '/', '\\');
  return win::LoadModule(path);
}

void TraceLackOfFunction(const char* function, const char* path, DWORD error) noexcept {
  trace::Trace(trace::kAlways, function, "Could not load function for %s - Error %d", path, static_cast<int>(error));
}

}  // namespace

SiblingSearch::~SiblingSearch() {
  if (state_ == kNotLoaded)
    trace::Trace(trace::kAlways, function_, "Could not load %s - Error %d", path_, static_cast<int>(error_));
  if (state_ == kFunctionMissing) TraceLackOfFunction(function_, path_, error_);
}

bool SiblingSearch::Bind(const char* folder, win::ModuleHandle& module, std::span<const BoundName> names,
                         void* table) noexcept {
  char path[kSiblingPathSize];
  module.Reset();
  module = LoadFrom(folder, file_, path);
  if (module && win::BindNames(module.Get(), table, names)) {
    state_ = kFound;
    return true;
  }
  const DWORD error = GetLastError();
  const bool first = state_ == kNothingTried, missingSoFar = state_ == kNotLoaded && error_ == ERROR_MOD_NOT_FOUND;
  if (first || (missingSoFar && error != ERROR_MOD_NOT_FOUND)) {
    state_ = module ? kFunctionMissing : kNotLoaded;
    error_ = error;
    std::memcpy(path_, path, sizeof path_);
  }
  return false;
}

void TraceMissingFunction(const char* function, HMODULE module) noexcept {
  char path[kSiblingPathSize] = {};
  GetModuleFileNameA(module, path, sizeof path);
  TraceLackOfFunction(function, path, ERROR_PROC_NOT_FOUND);
}

}  // namespace siblings
