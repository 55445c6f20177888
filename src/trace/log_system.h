// The front end of the trace library: loads TvLogSys.dll while somebody traces, and hands it the lines.
#pragma once

#include <windows.h>

#include "TvLogSys.h"
#include "trace/log_configuration.h"
#include "win/module.h"
#include "win/owner.h"

// The functions of TvLogSys.dll, in lookup order; all are required.
#define KE_TRACE_FUNCTIONS(ROW_CALLED, ROW_UNCALLED) \
  ROW_CALLED(LogSys_InitializeLogSystem, kRequired)  \
  ROW_CALLED(LogSys_FinalizeLogSystem, kRequired)    \
  ROW_CALLED(LogSys_ConfigureLogFile, kRequired)     \
  ROW_CALLED(LogSys_ConfigureLogDebugMsg, kRequired) \
  ROW_CALLED(LogSys_DumpLogFile, kRequired)          \
  ROW_CALLED(LogSys_DumpLogDebugMsg, kRequired)

namespace trace {

/// The process-wide front end of TvLogSys.dll. `Configure`, `LoadDependences` and `FreeDependences` take the trace
/// lock; `DumpLine` takes none and reads the entry points and the record as they stand. No function throws or changes
/// the last-error value.
class CL_LOG_SYSTEM {
 public:
  virtual ~CL_LOG_SYSTEM() = default;

  static CL_LOG_SYSTEM& Instance() noexcept;

  /// Reads level and size from the section LOG of the settings file, keeps the record made of them and loads the trace
  /// library from its directory. 0 when the library is ready, else -1. `*counted` receives whether a reference was
  /// acquired, possibly also after a failure; `FreeDependences` must release it. A changed level or size takes effect
  /// when the library is loaded again.
  int Configure(const char* moduleName, const char* settingsFile, const char* libraryDirectory,
                const char* logDirectory, bool* counted) noexcept;

  /// Ends one use of the library; the last one finalises and frees it. `counted` is what `Configure` reported: a use
  /// without a reference must not release that of another thread.
  void FreeDependences(bool counted) noexcept;

  /// True when lines are wanted at all.
  bool Enabled() const noexcept { return configuration_.fileOutput != 0 || configuration_.debuggerOutput != 0; }

  /// Adds date, process and thread to a line and hands it to the loaded library; drops it when none is loaded.
  void DumpLine(unsigned level, const char* function, const char* description) noexcept;

  /// Number of open uses, for tests.
  int References() const noexcept { return references_; }

 private:
  KE_FUNCTION_TABLE(EntryPoints, KE_TRACE_FUNCTIONS);

  bool LoadDependences(bool* counted) noexcept;
  bool LoadLibraryAndBind() noexcept;
  bool InitializeLibrary() noexcept;
  void FinalizeLibrary() noexcept;

  win::CriticalSection traceLock_;
  win::ModuleHandle library_;
  int references_ = 0;
  std::uint32_t logHandle_ = 0;
  EntryPoints entryPoints_{};
  LogConfiguration configuration_{};
};

}  // namespace trace
