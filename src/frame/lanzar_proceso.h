// The launcher of programs for routines that write to a sink.
#pragma once

#include <windows.h>

#include "frame/log_sink.h"

namespace frame {

/// Result of `LanzarProceso` for every failure; the platform's error is in the sink's line.
constexpr std::uint32_t kLaunchFailed = 40;

/// Starts `program`, whose path is put in quotes, with `parameters` (null for none), and with `wait` waits up to
/// `timeout` milliseconds for its end. 0, or `kLaunchFailed` when it could not be started or has not ended in time; it
/// is then left running.
///
/// `started` may be null. Otherwise it receives the process's handles, which the caller closes; all zero after a
/// failure. `reserved` is not used.
std::uint32_t LanzarProceso(ILogSink* sink, const wchar_t* program, const wchar_t* parameters, const void* reserved,
                            bool wait, PROCESS_INFORMATION* started, DWORD timeout, DWORD creationFlags);

}  // namespace frame
