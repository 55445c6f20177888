// The hardware UUID of the machine, as Windows Management Instrumentation reports it.
#pragma once

#include <cstddef>

#include "KELUtils.h"
#include "win/com.h"

namespace services {

/// False when KELUTILS.INI switches the query off: [UUID] CheckUUID is "false", in just these letters.
bool IsUuidQueryOn();

/// Asks for the UUID and copies it, in the system's code page and cut where it does not fit, into `buffer` of `size`
/// bytes, which is 1 or more. Of several answers the last one stays; without any, or with one that is no text, the
/// buffer stays as it was.
///
/// KE_SUCCESS; KE_NOT_CREATED when a step fails, which is traced under `function`. COM is left as it was found, also by
/// an exception.
KE_RESULT QueryMachineUuid(const char* function, const win::ComTable& com, char* buffer, std::size_t size);

/// The same with the COM of this machine, loaded for the call.
KE_RESULT QueryMachineUuid(const char* function, char* buffer, std::size_t size);

}  // namespace services
