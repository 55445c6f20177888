// The stack protector's number and its end, in place of those of GCC's libssp: that one asks a cryptographic provider
// for the number, and so loads two modules of Windows into the host with every load of the DLL. Linked into every DLL
// of the project. Other compilers bring their own.
#if defined(__MINGW32__)

#include <windows.h>

#include <ntsecapi.h>

#include <cstdint>

extern "C" {

// What functions put between their arrays and their return address, and compare at their end. The value here counts
// until the DLL is attached, before any function with an array runs.
std::uintptr_t __stack_chk_guard = 0xff0a0d00;

// A stack that was overwritten is not unwound: the process ends at once (FAST_FAIL_STACK_COOKIE_CHECK_FAILURE).
[[noreturn]] void __stack_chk_fail() {
  asm volatile("int $0x29" : : "c"(2));
  TerminateProcess(GetCurrentProcess(), STATUS_STACK_BUFFER_OVERRUN);  // systems without that interrupt
  __builtin_unreachable();
}

// Runs before the constructors of the DLL. Its lowest byte stays zero: a text that runs over ends there.
// NOLINTNEXTLINE(clang-diagnostic-unknown-attributes): clang 14 does not know the second one
[[gnu::constructor(101), gnu::no_stack_protector]] static void ChooseStackGuard() {
  std::uintptr_t number = 0;
  if (!RtlGenRandom(&number, sizeof number)) {
    LARGE_INTEGER counter{};
    FILETIME time;
    QueryPerformanceCounter(&counter);
    GetSystemTimeAsFileTime(&time);
    number = static_cast<std::uintptr_t>(counter.LowPart) ^ time.dwLowDateTime ^ (GetCurrentProcessId() << 16) ^
             GetCurrentThreadId() ^ reinterpret_cast<std::uintptr_t>(&counter);
  }
  __stack_chk_guard = number & ~std::uintptr_t{0xff};
}
}

#endif
