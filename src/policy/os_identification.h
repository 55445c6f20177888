// The release of Windows that this process runs on.
#pragma once

#include <cstdint>

#include "policy/log_sink.h"
#include "policy/os_names.h"

namespace policy {

/// Reads the platform's version record, in its extended form where there is one. False when the platform gives none.
bool GetVersionRecord(VersionRecord& record);

/// Writes the fields of a version record to the sink, one a line; the fields that a plain record lacks are left out.
void DumpVersionInfo(ILogSink* sink, const VersionRecord& record);

/// Identifies the running release anew and keeps its record. False when that fails or the platform is unknown. Any
/// thread, as for the functions below.
bool IdentifyOs();

/// The record of the last identification; all zero before the first.
OsRecord IdentifiedOs() noexcept;

/// True on a 64-bit release, also for a 32-bit process. Identifies the release unless that was done; false when that
/// fails.
bool IsOs64Bit();

/// The code of the release, one bit each. Identifies the release unless that was done; 0 when that fails.
std::uint32_t GetOsCode();

}  // namespace policy
