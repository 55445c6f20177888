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
  record.module = LoadSibling(folder, "TvEvAPI.dll");
  if (record.module == nullptr) return false;
  if (BindNames(record.module, &record, kNames)) return true;
  record.module = nullptr;
  return false;
}

void FreeEventApi(EventApiTable& record) noexcept {
  win::ModuleHandle(record.module).Reset();
  record.module = nullptr;
}

}  // namespace frame
