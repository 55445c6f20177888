// Lets the inner pieces, linked into the test program, run as the DLL of a product tree; with a test's own waiting and
// random numbers.
#pragma once

#include <string>

#include "store/integra_store.h"
#include "support/product_tree.h"
#include "win/module.h"
#include "win/process.h"
#include "win/random_number.h"

namespace support {

/// Attaches the inner pieces to the KELUtils.dll of a tree for the scope: its folder is the module directory, and the
/// lock exists.
struct InnerModule {
  explicit InnerModule(const ProductTree& tree) : InnerModule(tree.Path("KELUtils/KELUtils.dll")) {}
  explicit InnerModule(const std::filesystem::path& dll) : anchor(dll) {
    win::IntegraLock.Create();
    win::AttachModule(anchor.Handle());
  }
  ~InnerModule() {
    win::DetachModule();
    store::DropIntegraStore();
    win::IntegraLock.Destroy();
  }
  LoadedDll anchor;
};

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
  AgentTree() { TurnLogOn(); }

  const InnerModule module{*this};
  const HeldTime time;
};

}  // namespace support
