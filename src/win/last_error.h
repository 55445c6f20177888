// Keeps the calling thread's last-error value over a scope.
#pragma once

#include <windows.h>

namespace win {

/// Restores the last-error value at the end of the scope, so that what happens inside leaves no trace in it.
class KeptLastError {
 public:
  KeptLastError() noexcept : error_(GetLastError()) {}
  ~KeptLastError() { SetLastError(error_); }
  KeptLastError(const KeptLastError&) = delete;
  KeptLastError& operator=(const KeptLastError&) = delete;

 private:
  DWORD error_;
};

}  // namespace win
