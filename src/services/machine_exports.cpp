// The export that tells which machine this is.
#include "KELUtils.h"
#include "frame/export_call.h"
#include "services/machine_uuid.h"

KE_RESULT KE_API KE_GetUUID(char* buffer, int32_t bufferSize) {
  return frame::ExportCall(__func__, [&](frame::Export& self) -> KE_RESULT {
    if (buffer == nullptr) return KE_MISSING_ARGUMENT;
    if (bufferSize <= 0) return KE_BUFFER_TOO_SMALL;
    if (!services::IsUuidQueryOn()) {
      *buffer = '\0';
      return KE_SUCCESS;
    }
    return services::QueryMachineUuid(self.name, buffer, static_cast<std::size_t>(bufferSize));
  });
}
