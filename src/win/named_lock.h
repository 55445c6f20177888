// A lock between processes.
#pragma once

#include <windows.h>

#include "win/owner.h"

namespace win {

/// Holds the lock of that name for the scope, when it can be had in time; else the scope runs without it. A holder that
/// ends gives it up. Any account can take it. A thread that holds it can take it again. A name that begins with
/// "Global\" is that of all sessions; where it is denied, the session has one of its own.
class HeldBetweenProcesses {
 public:
  HeldBetweenProcesses(const char* name, DWORD milliseconds) noexcept;
  ~HeldBetweenProcesses();
  HeldBetweenProcesses(const HeldBetweenProcesses&) = delete;
  HeldBetweenProcesses& operator=(const HeldBetweenProcesses&) = delete;

 private:
  MutexHandle mutex_;
  bool held_ = false;
};

}  // namespace win
