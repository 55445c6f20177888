// What the trace system demands of each call of an export, in bare platform calls.
#pragma once

#include <string>

#include "TvLogSys.h"
#include "win/owner.h"

namespace bench {

/// The settings are read, the trace library is loaded, bound and set up, lines are written, and all is undone at the
/// end. Without the library it is looked for in its two places, and lines end before it.
class BareTrace {
 public:
  /// `directory` is that of KELUtils.dll.
  explicit BareTrace(const std::string& directory);

  void Open();

  /// An export that is called inside of another: the settings are read again, and the library stays loaded.
  void OpenAgain();
  void CloseAgain();

  void Line(const char* function, const char* description);
  void Close();

 private:
  void ReadSettings() const;
  struct Functions {
    decltype(&LogSys_InitializeLogSystem) initialize;
    decltype(&LogSys_FinalizeLogSystem) finalize;
    decltype(&LogSys_ConfigureLogFile) configureFile;
    decltype(&LogSys_ConfigureLogDebugMsg) configureDebugger;
    decltype(&LogSys_DumpLogFile) dumpFile;
    decltype(&LogSys_DumpLogDebugMsg) dumpDebugger;
  };

  std::string settings_, library_, log_;
  win::ModuleHandle module_;
  Functions functions_{};
  std::uint32_t handle_ = 0;
};

}  // namespace bench
