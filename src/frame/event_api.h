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

/// Binds the module from `folder`, which ends in a backslash, into the record. A failure is traced. At a missing name
/// the record's handle is zeroed and the module stays loaded for good.
bool LoadEventApi(const char* folder, EventApiTable& record) noexcept;

/// Frees the record's module, if it holds one, and zeroes its handle.
void FreeEventApi(EventApiTable& record) noexcept;

/// Owns a record for a scope: binds it, and frees it at the end.
class EventApiScope {
 public:
  /// `folder` as for `LoadEventApi`.
  explicit EventApiScope(const char* folder) noexcept { LoadEventApi(folder, record_); }
  ~EventApiScope() { FreeEventApi(record_); }
  EventApiScope(const EventApiScope&) = delete;
  EventApiScope& operator=(const EventApiScope&) = delete;

  /// True when the module is bound; only then may its functions be called.
  explicit operator bool() const noexcept { return record_.module != nullptr; }
  const EventApiTable& Functions() const noexcept { return record_; }

 private:
  EventApiTable record_{};
};

}  // namespace frame
