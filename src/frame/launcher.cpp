#include "frame/launcher.h"

#include "frame/module.h"
#include "frame/module_table.h"
#include "frame/paths.h"

namespace frame {
namespace {

#define KE_ROW(name, presence) KE_BOUND_NAME(LauncherTable, name, presence),
constexpr BoundName kNames[] = {KE_LAUNCHER_FUNCTIONS(KE_ROW, KE_ROW)};
#undef KE_ROW

ModuleTable<LauncherTable> g_launcher("KELMNAPI.dll", kNames);

}  // namespace

const LauncherTable& Launcher() noexcept { return g_launcher.Functions(); }

bool LoadLauncher(const char* folder) noexcept {
  SiblingSearch search = g_launcher.Search(__func__);
  return g_launcher.Load(folder, search);
}

void FreeLauncher() noexcept { g_launcher.Free(); }

KE_RESULT OpenLauncher() {
  const std::string directory = GetModuleDirectory();
  SiblingSearch search = g_launcher.Search(__func__);
  const bool bound =
      g_launcher.Load(CommonFolder(directory).c_str(), search) || g_launcher.Load(OwnFolder(directory).c_str(), search);
  return bound ? KE_SUCCESS : KE_LAUNCHER_NOT_LOADED;
}

}  // namespace frame
