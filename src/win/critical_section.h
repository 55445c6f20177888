// The platform's re-entrant lock.
#pragma once

#include <windows.h>

namespace win {

/// A critical section with an owner. Objects of static storage live as long as the DLL is loaded.
class CriticalSection {
 public:
  CriticalSection() noexcept { InitializeCriticalSection(&section_); }
  ~CriticalSection() { DeleteCriticalSection(&section_); }
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  void Enter() noexcept { EnterCriticalSection(&section_); }
  void Leave() noexcept { LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_;
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
