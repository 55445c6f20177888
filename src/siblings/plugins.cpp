#include "siblings/plugins.h"

#include <string>

#include "siblings/binder.h"
#include "siblings/settings_file.h"
#include "trace/trace.h"
#include "win/module.h"

namespace siblings {

namespace {

// Versions of the plug-in interface, in the order in which they are offered to a plug-in.
constexpr std::int32_t kModes[] = {6, 1};

// The plug-in's path from the list; empty, and traced, when it is missing.
std::string PathOf(const PluginPlace& place, const char* function) {
  const std::string list = win::ComponentFile(place.folder, place.listFile);
  std::string path = GetMyConfigIniValue("PLUGINS", place.key, list.c_str());
  if (path.empty()) {
    Trace(trace::kAlways, function, "Could not load the plug-in %s: %s has no path of it", place.key, list.c_str());
  }
  return path;
}

bool Initialise(const PluginTable& plugin) {
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
  const std::string path = PathOf(place, function);
  if (path.empty()) return place.unusable;
  SiblingSearch search(function, path.c_str());
  BoundModule<PluginTable> bound;
  const PluginTable& plugin = bound.functions;
  if (!bound.Bind("", search)) return place.unusable;
  if (!Initialise(plugin)) {
    Trace(trace::kDetail, function, "Could not initialise the plug-in %s", path.c_str());
    return place.unusable;
  }
  const FinaliseAtEnd finalise{plugin};
  const auto result = use(plugin, context);
  if (result && plugin.KE_Finalize) return *result;
  TraceMissingFunction(function, bound.module.Get());
  return place.unusable;
}

}  // namespace siblings
