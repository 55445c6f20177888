#include "kepires/install_event.h"

#include <sddl.h>

namespace kepires {
namespace {

using LocalMemory = win::Owner<HLOCAL, &LocalFree, 0>;

// Everything for the system, administrators and the owner; setting and waiting (0x100002) for authenticated users.
constexpr char kAccess[] = "D:(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;OW)(A;;0x100002;;;AU)";

}  // namespace

EventHandle MakeInstallEvent() noexcept {
  SECURITY_ATTRIBUTES security{sizeof security, nullptr, FALSE};
  if (!ConvertStringSecurityDescriptorToSecurityDescriptorA(kAccess, SDDL_REVISION_1, &security.lpSecurityDescriptor,
                                                            nullptr)) {
    return {};
  }
  const LocalMemory descriptor(security.lpSecurityDescriptor);
  return EventHandle(CreateEventExA(&security, kInstallEventName, CREATE_EVENT_MANUAL_RESET, SYNCHRONIZE));
}

}  // namespace kepires
