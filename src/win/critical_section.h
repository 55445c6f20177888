// The platform's re-entrant lock.
#pragma once

#include <windows.h>

namespace win {

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
class Holding {
 public:
  explicit Holding(Lock& lock) noexcept : lock_(lock) { lock_.Enter(); }
  ~Holding() { lock_.Leave(); }
  Holding(const Holding&) = delete;
  Holding& operator=(const Holding&) = delete;

 private:
  Lock& lock_;
};

}  // namespace win
