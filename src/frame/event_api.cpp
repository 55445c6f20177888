#include "frame/event_api.h"

#include "frame/sibling_binder.h"
#include "win/owner.h"

namespace frame {
namespace {

#define KE_ROW(name, presence) KE_BOUND_NAME(EventApiTable, name, presence),
constexpr BoundName kNames[] = {KE_EVENT_API_FUNCTIONS(KE_ROW, KE_ROW)};
#undef KE_ROW

}  // namespace

bool LoadEventApi(const char* folder, EventApiTable& record) noexcept {
  SiblingSearch search(__func__, "TvEvAPI.dll", kNames);
  win::ModuleHandle module;
  const bool bound = search.Bind(folder, module, &record);
  const HMODULE loaded = module.Release();
  record.module = bound ? loaded : nullptr;
  return bound;
}

void FreeEventApi(EventApiTable& record) noexcept {
  win::ModuleHandle(record.module).Reset();
  record.module = nullptr;
}

}  // namespace frame
