// Components of the product, run by the launcher module.
#pragma once

#include <cstdint>

#include "frame/launcher.h"

namespace frame {

/// Binds the launcher from the Common folder for a scope, unless it is bound already; what it has bound it frees.
class LauncherScope {
 public:
  /// A launcher that cannot be bound is traced under `function`.
  explicit LauncherScope(const char* function);
  ~LauncherScope();
  LauncherScope(const LauncherScope&) = delete;
  LauncherScope& operator=(const LauncherScope&) = delete;

  /// True when the launcher is bound.
  explicit operator bool() const noexcept { return Launcher().Run != nullptr; }

 private:
  bool boundHere_;
};

/// What came of a component's command.
struct ComponentRun {
  bool launcherBound;
  int launcherResult;     // 0 when the launcher ran the command
  std::int32_t exitCode;  // 0 unless the command told otherwise
};

/// Has the launcher run `command`, a command line of `component`, and frees the launcher, whoever bound it. A launcher
/// that cannot be bound, or cannot run the command, is traced under `function`.
ComponentRun RunComponent(const char* function, const char* component, const char* command);

/// Traces that the command of `component` ended with an exit code that is not 0.
void TraceComponentFailed(const char* function, const char* component, std::int32_t exitCode) noexcept;

}  // namespace frame
