// Owners of Windows objects: each closes its object exactly once. No other code calls a close function.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <utility>

namespace win {

/// Sole owner of a Windows object. `kNone` is the value of an empty owner, as an integer.
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

  /// Closes the object, keeping the last-error value, and owns `object` instead.
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

// Keeps the calling thread's last-error value over a scope.

/// Restores the last-error value at the end of the scope.
class KeptLastError {
 public:
  KeptLastError() noexcept : error_(GetLastError()) {}
  ~KeptLastError() { SetLastError(error_); }
  KeptLastError(const KeptLastError&) = delete;
  KeptLastError& operator=(const KeptLastError&) = delete;

 private:
  DWORD error_;
};

// The re-entrant lock of Windows.

/// A critical section that exists from `Create` to `Destroy`, for a lock whose life is a step of attach and detach.
class ManualCriticalSection {
 public:
  void Create() noexcept { InitializeCriticalSection(&section_); }
  void Destroy() noexcept { DeleteCriticalSection(&section_); }
  void Enter() noexcept { EnterCriticalSection(&section_); }
  void Leave() noexcept { LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_{};
};

/// A critical section with an owner. Objects of static storage live as long as the DLL is loaded.
class CriticalSection {
 public:
  CriticalSection() noexcept { section_.Create(); }
  ~CriticalSection() { section_.Destroy(); }
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  void Enter() noexcept { section_.Enter(); }
  void Leave() noexcept { section_.Leave(); }

 private:
  ManualCriticalSection section_;
};

/// Holds a lock for the scope. `Lock` has Enter and Leave.
template <typename Lock>
class LockGuard {
 public:
  explicit LockGuard(Lock& lock) noexcept : lock_(lock) { lock_.Enter(); }
  ~LockGuard() { lock_.Leave(); }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;

 private:
  Lock& lock_;
};

// Wiping memory that held a secret.

/// Overwrites a block with zeros at the end of the scope, in a way that the optimiser keeps. The block must live that
/// long.
class WipeAtEnd {
 public:
  WipeAtEnd(void* data, std::size_t size) noexcept : data_(data), size_(size) {}
  ~WipeAtEnd() { SecureZeroMemory(data_, size_); }
  WipeAtEnd(const WipeAtEnd&) = delete;
  WipeAtEnd& operator=(const WipeAtEnd&) = delete;

 private:
  void* data_;
  std::size_t size_;
};

}  // namespace win
