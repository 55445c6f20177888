// Memory that runs out once, in programs that link failing_allocation.cpp. Not for several threads.
#pragma once

namespace support {

/// Which allocation by `operator new` from now on fails, once; 0 for none.
extern int g_failingAllocation;

}  // namespace support
