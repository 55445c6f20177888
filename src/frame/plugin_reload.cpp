#include "frame/plugin_reload.h"

#include "frame/module_table.h"

namespace frame {
namespace {

#define KE_ROW(name, presence) KE_BOUND_NAME(PluginReloadTable, name, presence),
constexpr BoundName kNames[] = {KE_PLUGIN_RELOAD_FUNCTIONS(KE_ROW, KE_ROW)};
#undef KE_ROW

ModuleTable<PluginReloadTable> g_pluginReload("KERegister.dll", kNames);

}  // namespace

const PluginReloadTable& PluginReload() noexcept { return g_pluginReload.Functions(); }

bool LoadPluginReload(const char* folder) noexcept {
  SiblingSearch search = g_pluginReload.Search(__func__);
  return g_pluginReload.Load(folder, search);
}

void FreePluginReload() noexcept { g_pluginReload.Free(); }

}  // namespace frame
