// The hardware UUID of the machine, which Windows Management Instrumentation returns.
#pragma once

#include <windows.h>
// After windows.h.
#include <objbase.h>
#include <oleauto.h>

#include <cstddef>

#include "KEResults.h"

namespace agent {

#define KE_OLE32_FUNCTIONS(ROW) \
  ROW(CoInitializeEx)           \
  ROW(CoUninitialize)           \
  ROW(CoInitializeSecurity)     \
  ROW(CoCreateInstance)         \
  ROW(CoSetProxyBlanket)

#define KE_OLEAUT32_FUNCTIONS(ROW) \
  ROW(SysAllocString)              \
  ROW(SysFreeString)               \
  ROW(VariantClear)

#define KE_MEMBER(name) decltype(&::name) name;

/// The functions of COM that the query calls; none is null. Tests replace them.
struct ComTable {
  KE_OLE32_FUNCTIONS(KE_MEMBER)
  KE_OLEAUT32_FUNCTIONS(KE_MEMBER)
};

#undef KE_MEMBER

/// Queries the UUID with these functions, whatever the setting below. For `QueryMachineUuid` and the tests.
KE_RESULT QueryUuid(const char* function, const ComTable& com, char* buffer, std::size_t size);

/// Queries the UUID and copies it, in the system's code page and cut to fit, into `buffer` of `size` bytes, which is 1
/// or more. Of several results the last one counts; without a text the buffer stays unchanged. COM is loaded for the
/// call. The buffer is emptied when KELUTILS.INI disables the query: [UUID] CheckUUID is "false", in just these
/// letters.
///
/// KE_SUCCESS; KE_NOT_CREATED when a step fails, which is traced under `function`. The state of COM is restored, also
/// after an exception.
KE_RESULT QueryMachineUuid(const char* function, char* buffer, std::size_t size);

}  // namespace agent
