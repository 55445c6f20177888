#include "services/plugin.h"

#include <string>

#include "frame/module.h"
#include "frame/paths.h"
#include "frame/settings_file.h"
#include "frame/sibling_binder.h"
#include "frame/trace.h"
#include "win/owner.h"

namespace services {
namespace {

constexpr frame::BoundName kNames[] = {
    KE_BOUND_NAME(PluginTable, KE_Initialize, kOptional),
    KE_BOUND_NAME(PluginTable, KE_Finalize, kOptional),
    KE_BOUND_NAME(PluginTable, KECONF_SetInfo, kOptional),
    KE_BOUND_NAME(PluginTable, KEINSTALL_SetInfo, kOptional),
    KE_BOUND_NAME(PluginTable, KEINSTALL_GetInetConfig, kOptional),
};

// A plug-in is told the current version of its interface first, then the first version.
constexpr std::int32_t kModes[] = {6, 1};

std::string PathOf(const PluginPlace& place) {
  const std::string list = frame::SiblingFolder(frame::GetModuleDirectory(), place.folder) + place.listFile;
  return frame::GetMyConfigIniValue("PLUGINS", place.key, list.c_str());
}

bool Initialise(const PluginTable& plugin) {
  if (plugin.KE_Initialize == nullptr) return false;
  for (const std::int32_t mode : kModes) {
    if (plugin.KE_Initialize(mode) == 0) return true;
  }
  return false;
}

/// Finalises an initialised plug-in at the end of the scope, also when its use ends in an exception.
struct FinaliseAtEnd {
  ~FinaliseAtEnd() {
    if (plugin.KE_Finalize) plugin.KE_Finalize();
  }
  const PluginTable& plugin;
};

}  // namespace

KE_RESULT UsePlugin(const PluginPlace& place, const char* function, PluginUse use, void* context) {
  const std::string path = PathOf(place);
  if (path.empty()) return place.unusable;
  if (!frame::IsFullPath(path)) {  // it would be searched for, beginning with the current directory
    Trace(frame::kDetail, function, "The path of the plug-in is not a full one: %s", path.c_str());
    return place.unusable;
  }
  const win::ModuleHandle module(LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module) {
    Trace(frame::kAlways, function, "Could not load %s - Error %d", path.c_str(), static_cast<int>(GetLastError()));
    return place.unusable;
  }
  PluginTable plugin{};
  frame::BindNames(module.Get(), &plugin, kNames);
  if (!Initialise(plugin)) return place.unusable;
  const FinaliseAtEnd finalise{plugin};
  const KE_RESULT result = use(plugin, context);
  return plugin.KE_Finalize ? result : place.unusable;
}

}  // namespace services
