// COM, by a table of its functions, and the UUID of the machine, which WMI reads through it. The functions are bound
// when they are needed; tests put their own there.
#pragma once

#include <windows.h>
// After windows.h.
#include <objbase.h>
#include <oleauto.h>

#include <cstddef>
#include <new>

#include "KEResults.h"
#include "win/owner.h"

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

/// The functions of COM that this library calls; none is null.
struct ComTable {
  KE_OLE32_FUNCTIONS(KE_MEMBER)
  KE_OLEAUT32_FUNCTIONS(KE_MEMBER)
};

#undef KE_MEMBER

/// COM on this thread, until the end of the scope.
class ComScope {
 public:
  ComScope(const ComTable& com, DWORD model) noexcept
      : com_(com), initialised_(SUCCEEDED(com.CoInitializeEx(nullptr, model))) {}
  ~ComScope() {
    if (initialised_) com_.CoUninitialize();
  }
  ComScope(const ComScope&) = delete;
  ComScope& operator=(const ComScope&) = delete;

  explicit operator bool() const noexcept { return initialised_; }

 private:
  const ComTable& com_;
  bool initialised_;
};

template <typename Interface>
void ReleaseInterface(Interface* object) noexcept {
  object->Release();
}

/// Sole owner of a reference to an object.
template <typename Interface>
using ComPointer = win::Owner<Interface*, &ReleaseInterface<Interface>, 0>;

/// The object that `call(out)` stores and answers for; none when it fails or stores nothing.
template <typename Interface, typename Call>
ComPointer<Interface> ObtainObject(Call call) {
  Interface* object = nullptr;
  const HRESULT result = call(&object);
  ComPointer<Interface> owned(object);
  if (FAILED(result)) owned.Reset();
  return owned;
}

/// A text in COM's own memory. Throws std::bad_alloc.
class ComBstr {
 public:
  ComBstr(const ComTable& com, const wchar_t* text) : com_(com), text_(com.SysAllocString(text)) {
    if (text_ == nullptr) throw std::bad_alloc();
  }
  ~ComBstr() { com_.SysFreeString(text_); }
  ComBstr(const ComBstr&) = delete;
  ComBstr& operator=(const ComBstr&) = delete;

  BSTR Get() const noexcept { return text_; }

 private:
  const ComTable& com_;
  BSTR text_;
};

/// A value of any type, empty at first.
class ComVariant {
 public:
  explicit ComVariant(const ComTable& com) noexcept : com_(com) {}
  ~ComVariant() { com_.VariantClear(&value_); }
  ComVariant(const ComVariant&) = delete;
  ComVariant& operator=(const ComVariant&) = delete;

  /// For a call that stores the value.
  VARIANT* Out() noexcept { return &value_; }

  /// The text, owned by this; null when the value is none.
  const wchar_t* Text() const noexcept { return value_.vt == VT_BSTR ? value_.bstrVal : nullptr; }

 private:
  const ComTable& com_;
  VARIANT value_{};  // VT_EMPTY
};

// COM, loaded only while it is used: few hosts ever need it.

/// Keeps the modules of COM loaded while it lives. Outlives every object and scope made with its functions.
class ComLibrary {
 public:
  ComLibrary() noexcept;

  /// The functions; null when any is missing.
  const ComTable* Functions() const noexcept { return bound_ ? &functions_ : nullptr; }

 private:
  win::ModuleHandle ole32_;
  win::ModuleHandle oleaut32_;
  ComTable functions_{};
  bool bound_;
};

// The hardware UUID of the machine, as Windows Management Instrumentation reports it.

/// False when KELUTILS.INI switches the query off: [UUID] CheckUUID is "false", in just these letters.
bool IsUuidQueryOn();

/// Asks for the UUID and copies it, in the system's code page and cut where it does not fit, into `buffer` of `size`
/// bytes, which is 1 or more. Of several answers the last one stays; without any, or with one that is no text, the
/// buffer stays as it was.
///
/// KE_SUCCESS; KE_NOT_CREATED when a step fails, which is traced under `function`. COM is left as it was found, also by
/// an exception.
KE_RESULT QueryMachineUuid(const char* function, const ComTable& com, char* buffer, std::size_t size);

/// The same with the COM of this machine, loaded for the call.
KE_RESULT QueryMachineUuid(const char* function, char* buffer, std::size_t size);

}  // namespace agent
