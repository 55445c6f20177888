// A product tree in which the inner pieces run as the DLL, with the library's waiting and chance in the test's hands.
#pragma once

#include <string>

#include "support/inner_module.h"
#include "win/process.h"
#include "win/random_number.h"

namespace support {

/// Puts waiting and chance into the test's hands for the scope: pauses are only noted, programs are really waited for
/// unless `inTime` is false, and the random number is `random`.
struct HeldTime {
  HeldTime() {
    pauses.clear();
    inTime = true;
    win::g_waiting = {[](DWORD milliseconds) { pauses += std::to_string(milliseconds) + " "; }, WaitForProgram};
    win::g_randomNumber = [] { return random; };
  }
  ~HeldTime() {
    win::g_waiting = waiting;
    win::g_randomNumber = number;
  }
  static DWORD WaitForProgram(const win::Process& process, DWORD milliseconds) {
    waited = milliseconds;
    return inTime ? process.Wait(60000) : DWORD{WAIT_TIMEOUT};
  }

  static inline std::string pauses;
  static inline DWORD waited = 0;
  static inline bool inTime = true;
  static inline int random = 0;

 private:
  win::Waiting waiting = win::g_waiting;
  win::RandomNumber number = win::g_randomNumber;
};

/// A traced product tree, with its own folder for the agent's store.
struct AgentTree : ProductTree {
  AgentTree() {
    AddDevkit("TvLogSys.dll", "Common");
    WriteFile(Path("KELUtils/KELUTILS.INI"), "[LOG]\r\nLEVELLOG=20\r\n");
  }

  /// True when the log has a line that ends in this function and description.
  bool Traced(const std::string& line) const {
    return ReadFile(Path("KELUtils/KELUtils.log")).find(";KELUtils;" + line + "\r\n") != std::string::npos;
  }

  const InnerModule module{*this};
  const HeldTime time;
};

}  // namespace support
