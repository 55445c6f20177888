// Fixes three leaks of GCC's static runtime. Linked into every DLL of the project, because they are loaded and unloaded
// repeatedly.
//
// 1. The runtime keeps two words for each thread about exceptions in flight. Its own functions allocate a TLS slot at
//    the first exception and never free it: each load of a DLL with an exception would cost its host one of some
//    thousand slots. The functions below keep the words in fiber-local storage, whose slot and blocks are freed when
//    the DLL is unloaded, and a thread's block when the thread ends. (Itanium C++ ABI, Exception Handling, 2.2.2
//    "Caught Exception Stack".)
// 2. The runtime's locks are semaphores that are created while a DLL is loaded and never closed: one handle for each
//    load. Its calls of CreateSemaphoreW go through the pointer below, which records the handles and closes them at the
//    end.
// 3. The runtime allocates some 19 KB for exceptions without memory while a DLL is loaded and never frees them. A
//    function of the runtime frees them.
//
// The first two definitions take precedence over those of the static libraries. Runtimes of other compilers do not
// have these leaks.

#if defined(__MINGW32__)

#include <cxxabi.h>
#include <windows.h>
// After windows.h.
#include <ntsecapi.h>

#include <cstdint>
#include <iterator>

namespace __gnu_cxx {
void __freeres();  // a function of the runtime that no header declares
}

namespace {

// A thread's state, as the ABI defines it.
struct ExceptionState {
  void* caughtExceptions;
  unsigned int uncaughtExceptions;
};

constinit DWORD g_slot = FLS_OUT_OF_INDEXES;

// For when there is no slot or no memory: one thread at a time can then still get its exception caught.
constinit ExceptionState g_sharedState{};

// The runtime has two or three locks. A handle more than there are places for is not closed.
constinit HANDLE g_semaphores[8]{};
constinit LONG g_semaphoreCount = 0;

void WINAPI FreeState(void* state) { HeapFree(GetProcessHeap(), 0, state); }

ExceptionState* MakeState() noexcept {
  void* const state = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, sizeof(ExceptionState));
  if (state == nullptr) return &g_sharedState;
  if (FlsSetValue(g_slot, state)) return static_cast<ExceptionState*>(state);
  FreeState(state);
  return &g_sharedState;
}

abi::__cxa_eh_globals* CurrentState() noexcept {
  ExceptionState* current = &g_sharedState;
  if (g_slot != FLS_OUT_OF_INDEXES) {
    const DWORD error = GetLastError();
    void* const state = FlsGetValue(g_slot);
    current = state ? static_cast<ExceptionState*>(state) : MakeState();
    SetLastError(error);
  }
  return reinterpret_cast<abi::__cxa_eh_globals*>(current);
}

HANDLE WINAPI CreateKeptSemaphore(SECURITY_ATTRIBUTES* security, LONG initial, LONG maximum, const wchar_t*) {
  const HANDLE semaphore = CreateSemaphoreA(security, initial, maximum, nullptr);  // the runtime's have no names
  if (semaphore != nullptr) {
    const LONG place = InterlockedIncrement(&g_semaphoreCount) - 1;
    if (place < static_cast<LONG>(std::size(g_semaphores))) g_semaphores[place] = semaphore;
  }
  return semaphore;
}

// Exists while the DLL is loaded. Afterwards the runtime acquires its locks again, but then without waiting for them.
struct RuntimeState {
  RuntimeState() noexcept { g_slot = FlsAlloc(FreeState); }
  ~RuntimeState() {
    const DWORD slot = g_slot;
    g_slot = FLS_OUT_OF_INDEXES;
    if (slot != FLS_OUT_OF_INDEXES) FlsFree(slot);
    for (const HANDLE semaphore : g_semaphores) {
      if (semaphore != nullptr) CloseHandle(semaphore);
    }
    __gnu_cxx::__freeres();
  }
} const g_runtimeState;

}  // namespace

extern "C" {

abi::__cxa_eh_globals* __cxxabiv1::__cxa_get_globals() noexcept { return CurrentState(); }
abi::__cxa_eh_globals* __cxxabiv1::__cxa_get_globals_fast() noexcept { return CurrentState(); }

// Where the runtime's compiled code finds the address of CreateSemaphoreW.
extern decltype(&CreateKeptSemaphore) const g_createSemaphore asm("__imp__CreateSemaphoreW@16");
decltype(&CreateKeptSemaphore) const g_createSemaphore = CreateKeptSemaphore;
}

#endif

// Small versions of the failure functions of GCC's static runtime. Linked into every DLL of the project, before the
// static libraries: the runtime's own functions compose unused texts and add some 130 KB of code.

#if defined(__MINGW32__)

#include <bits/functexcept.h>

#include <cstdlib>
#include <exception>
#include <new>

// For an uncaught exception. The runtime's version names the type of the exception, with a demangler.
namespace __gnu_cxx {
void __verbose_terminate_handler() { std::abort(); }
}  // namespace __gnu_cxx

// Called by the classes of the standard library. The runtime's versions throw exceptions with strings, of both of its
// kinds. An impossible length counts as missing memory; the others are mistakes in the program, which the export
// catches.
namespace std {
void __throw_bad_alloc() { throw bad_alloc(); }
void __throw_bad_array_new_length() { throw bad_array_new_length(); }
void __throw_length_error(const char*) { throw bad_alloc(); }
void __throw_logic_error(const char*) { throw exception(); }
void __throw_out_of_range(const char*) { throw exception(); }
void __throw_out_of_range_fmt(const char*, ...) { throw exception(); }
}  // namespace std

#endif

// The stack protector's guard value and failure function, in place of those of GCC's libssp, which asks a
// cryptographic provider for the value and so loads two modules of Windows into the host with every load of the DLL.
// Linked into every DLL of the project. Other compilers have their own.

#if defined(__MINGW32__)

extern "C" {

// The value that functions put between their arrays and their return address, and compare at their end. This one is
// replaced when the DLL is attached, before any function with an array runs.
std::uintptr_t __stack_chk_guard = 0xff0a0d00;

// A stack that was overwritten is not unwound: the process ends at once (FAST_FAIL_STACK_COOKIE_CHECK_FAILURE).
[[noreturn]] void __stack_chk_fail() {
  asm volatile("int $0x29" : : "c"(2));
  TerminateProcess(GetCurrentProcess(), STATUS_STACK_BUFFER_OVERRUN);  // systems without that interrupt
  __builtin_unreachable();
}

// Runs before the constructors of the DLL. Its lowest byte stays zero: a text that runs over ends there.
__attribute__((constructor(101), no_stack_protector)) static void ChooseStackGuard() {
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
