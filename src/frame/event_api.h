// The event module: every caller binds a record of its own.
#pragma once

#include <windows.h>

#include "frame/sibling_names.h"

namespace frame {

/// TvEvAPI.dll as one caller has bound it. Zero-filled by the caller before it is loaded.
struct EventApiTable {
  HMODULE module;
  KE_EVENT_API_FUNCTIONS(KE_CALLED_MEMBER, KE_UNCALLED_MEMBER)
};

/// Binds the module from `folder`, which ends in a backslash, into the record. At a missing name the record's handle is
/// zeroed and the module stays loaded for good.
bool LoadEventApi(const char* folder, EventApiTable& record) noexcept;

/// Frees the record's module, if it holds one, and zeroes its handle.
void FreeEventApi(EventApiTable& record) noexcept;

}  // namespace frame
