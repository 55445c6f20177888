#include "frame/component.h"

#include "frame/module.h"
#include "frame/paths.h"
#include "frame/trace.h"

namespace frame {

LauncherScope::LauncherScope(const char* function) : boundHere_(Launcher().Run == nullptr) {
  if (boundHere_ && !LoadLauncher(CommonFolder(GetModuleDirectory()).c_str())) {
    Trace(kAlways, function, "Could not load KELMNAPI");
  }
}

LauncherScope::~LauncherScope() {
  if (boundHere_) FreeLauncher();
}

ComponentRun RunComponent(const char* function, const char* component, const char* command) {
  const FreeLauncherAtEnd release;
  const LauncherScope launcher(function);
  ComponentRun run{};
  run.launcherBound = static_cast<bool>(launcher);
  if (!run.launcherBound) return run;
  run.launcherResult = Launcher().Run(command, &run.exitCode);
  if (run.launcherResult != 0) {
    Trace(kDetail, function, "Could not Run %s. Launcher function returned code :%i", component, run.launcherResult);
  }
  return run;
}

void TraceComponentFailed(const char* function, const char* component, std::int32_t exitCode) noexcept {
  Trace(kDetail, function, "Could not Run %s. %s Run returned code :%i", component, component,
        static_cast<int>(exitCode));
}

}  // namespace frame
