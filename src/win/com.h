// COM, by a table of its functions: whoever uses it binds them when they are needed, and tests put their own there.
// What is taken from it has an owner here.
#pragma once

#include <windows.h>
// Order matters to the platform's headers.
#include <objbase.h>
#include <oleauto.h>

#include <new>

#include "win/owner.h"

namespace win {

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
using ComPointer = Owner<Interface*, &ReleaseInterface<Interface>, 0>;

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
class ComText {
 public:
  ComText(const ComTable& com, const wchar_t* text) : com_(com), text_(com.SysAllocString(text)) {
    if (text_ == nullptr) throw std::bad_alloc();
  }
  ~ComText() { com_.SysFreeString(text_); }
  ComText(const ComText&) = delete;
  ComText& operator=(const ComText&) = delete;

  BSTR Get() const noexcept { return text_; }

 private:
  const ComTable& com_;
  BSTR text_;
};

/// A value of any type, empty at first.
class ComValue {
 public:
  explicit ComValue(const ComTable& com) noexcept : com_(com) {}
  ~ComValue() { com_.VariantClear(&value_); }
  ComValue(const ComValue&) = delete;
  ComValue& operator=(const ComValue&) = delete;

  /// For a call that stores the value.
  VARIANT* Out() noexcept { return &value_; }

  /// The text, owned by this; null when the value is none.
  const wchar_t* Text() const noexcept { return value_.vt == VT_BSTR ? value_.bstrVal : nullptr; }

 private:
  const ComTable& com_;
  VARIANT value_{};  // VT_EMPTY
};

}  // namespace win
