// Owners of platform objects: each closes what it holds exactly once. Nothing outside this header calls a close
// function.
#pragma once

#include <windows.h>

#include <cstdint>
#include <utility>

namespace win {

/// Sole owner of a platform object. `kNone` is the value that stands for "nothing held", as an integer.
template <typename Type, auto Close, std::intptr_t kNone>
class Owner {
 public:
  Owner() noexcept = default;
  explicit Owner(Type object) noexcept : object_(object) {}
  Owner(Owner&& other) noexcept : object_(other.Release()) {}
  Owner& operator=(Owner&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  ~Owner() { Reset(); }

  explicit operator bool() const noexcept { return object_ != None(); }
  Type Get() const noexcept { return object_; }

  /// Gives the object up without closing it.
  Type Release() noexcept { return std::exchange(object_, None()); }

  /// Closes what is held, keeping the last-error value, and holds `object` instead.
  void Reset(Type object = None()) noexcept {
    const Type old = std::exchange(object_, object);
    if (old == None()) return;
    const DWORD error = GetLastError();
    Close(old);
    SetLastError(error);
  }

 private:
  static Type None() noexcept { return reinterpret_cast<Type>(kNone); }

  Type object_ = None();
};

using FileHandle = Owner<HANDLE, &CloseHandle, -1>;
using ProcessHandle = Owner<HANDLE, &CloseHandle, 0>;
using EventHandle = Owner<HANDLE, &CloseHandle, 0>;
using MutexHandle = Owner<HANDLE, &CloseHandle, 0>;
using FindHandle = Owner<HANDLE, &FindClose, -1>;
using RegistryKey = Owner<HKEY, &RegCloseKey, 0>;
using ModuleHandle = Owner<HMODULE, &FreeLibrary, 0>;

}  // namespace win
