// Three leaks of GCC's static runtime, closed. Linked into every DLL of the project that is loaded and unloaded over
// and over.
//
// 1. The runtime keeps two words a thread about exceptions in flight. Its own functions for that take a TLS slot with
//    the first exception and never return it: each load of a DLL that meets an exception would cost its host one of
//    some thousand slots. The functions below keep the words in fiber-local storage, whose slot and blocks are returned
//    when the DLL is unloaded, and a thread's block when the thread ends. (Itanium C++ ABI, Exception Handling, 2.2.2
//    "Caught Exception Stack".)
// 2. The runtime's locks are semaphores that are made while a DLL is loaded and never closed: one handle a load. Its
//    calls of CreateSemaphoreW go through the pointer below, which keeps the handles so that they are closed at the
//    end.
// 3. The runtime keeps some 19 KB in reserve for exceptions when memory has run out, taken while a DLL is loaded and
//    never freed: a host that loads a DLL for each call would lose them each time. The runtime has a function that
//    frees them.
//
// The first two definitions go before those of the static libraries. Other compilers' runtimes have no such leaks.

#if defined(__MINGW32__)

#include <cxxabi.h>
#include <windows.h>
// After windows.h.
#include <ntsecapi.h>

#include <cstdint>
#include <iterator>

namespace __gnu_cxx {
void __freeres();  // of the runtime, which declares it in none of its headers
}

namespace {

// What the ABI says a thread's state consists of.
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

// Lives as long as the DLL is loaded. The runtime takes its locks once more after its end, but then without waiting for
// them.
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

// Small forms of what GCC's static runtime does when something cannot go on. Linked into every DLL of the project,
// before the static libraries: the runtime's own forms make texts that nobody reads there, and bring some 130 KB of
// code for them.

#if defined(__MINGW32__)

#include <bits/functexcept.h>

#include <cstdlib>
#include <exception>
#include <new>

// For an exception that nobody catches. The runtime's form names the type of the exception, with a demangler.
namespace __gnu_cxx {
void __verbose_terminate_handler() { std::abort(); }
}  // namespace __gnu_cxx

// What the standard library's classes call. The runtime's forms throw exceptions that hold strings, of both of its
// kinds. A length that no container can have is memory that cannot be had; the others are mistakes in the program,
// which end at the export.
namespace std {
void __throw_bad_alloc() { throw bad_alloc(); }
void __throw_bad_array_new_length() { throw bad_array_new_length(); }
void __throw_length_error(const char*) { throw bad_alloc(); }
void __throw_logic_error(const char*) { throw exception(); }
void __throw_out_of_range(const char*) { throw exception(); }
void __throw_out_of_range_fmt(const char*, ...) { throw exception(); }
}  // namespace std

#endif

// The stack protector's number and its end, in place of those of GCC's libssp: that one asks a cryptographic provider
// for the number, and so loads two modules of Windows into the host with every load of the DLL. Linked into every DLL
// of the project. Other compilers bring their own.

#if defined(__MINGW32__)

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
