#include "frame/plugin_registration.h"

#include "frame/paths.h"
#include "frame/plugin_reload.h"
#include "frame/trace.h"
#include "win/code_page.h"
#include "win/registry.h"

namespace frame {

std::string PluginFolder(std::string directory) {
  if (!EndsInBackslash(directory, win::IsLeadByte) && !directory.ends_with('/')) directory += '\\';
  return directory;
}

KE_RESULT ReRegisterPluginsFromRegistry() {
  Trace(kInfo, __func__, "Function start");
  const auto names = win::ValueNames(HKEY_LOCAL_MACHINE, kProtectionsKey, kLongestProtection);
  if (!names) {
    Trace(kDetail, __func__, "Could not open the registry key %s", kProtectionsKey);
    return KE_REGISTRY_UNUSABLE;
  }
  for (const auto& name : *names) {
    if (!name.empty()) ReRegisterOnePluginFromRegistry(name.c_str());
  }
  return KE_SUCCESS;
}

void ReRegisterOnePluginFromRegistry(const char* valueName) {
  Trace(kInfo, __func__, "Function start");
  const auto directory =
      win::ReadTextValue(HKEY_LOCAL_MACHINE, kProtectionsKey, valueName, kLongestProtectionDirectory);
  if (!directory) {
    Trace(kDetail, __func__, "Could not read the directory of the plug-in %s", valueName);
    return;
  }
  if (LoadPluginReload(PluginFolder(*directory).c_str())) PluginReload().KE_ReloadPlugins();
  FreePluginReload();  // also a module that lacks the function
}

}  // namespace frame
