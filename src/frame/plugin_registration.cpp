#include "frame/plugin_registration.h"

#include "frame/plugin_reload.h"
#include "frame/trace.h"
#include "win/registry.h"

namespace frame {

KE_RESULT ReRegisterPluginsFromRegistry() {
  Trace(kInfo, __func__, "Function start");
  const auto names = win::ValueNames(HKEY_LOCAL_MACHINE, kProtectionsKey, kLongestProtection);
  if (!names) return KE_REGISTRY_UNUSABLE;
  for (const auto& name : *names) {
    if (!name.empty()) ReRegisterOnePluginFromRegistry(name.c_str());
  }
  return KE_SUCCESS;
}

void ReRegisterOnePluginFromRegistry(const char* valueName) {
  Trace(kInfo, __func__, "Function start");
  auto directory = win::ReadTextValue(HKEY_LOCAL_MACHINE, kProtectionsKey, valueName, kLongestProtectionDirectory);
  // An empty directory would name the root of the current drive.
  if (!directory || directory->empty()) return;
  if (directory->back() != '\\') *directory += '\\';
  if (LoadPluginReload(directory->c_str())) PluginReload().KE_ReloadPlugins();
  FreePluginReload();  // also a module that lacks the function
}

}  // namespace frame
