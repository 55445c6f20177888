// The bare Windows calls that tracing needs in each call of an export.
#pragma once

#include <string>

#include "TvLogSys.h"
#include "win/owner.h"

namespace bench {

/// Reads the settings, loads, binds and sets up the trace library, writes lines, and frees it at the end. If the
/// library is missing, it is looked for in its two places and no lines are written.
class BareTrace {
 public:
  /// `directory` is the folder of KELUtils.dll.
  explicit BareTrace(const std::string& directory);

  void Open();

  /// A nested export: reads the settings again; the library stays loaded.
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
