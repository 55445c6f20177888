// Plug-ins that other components of the agent host, used by this library for a single call each.
#pragma once

#include <optional>

#include "KEPlugin.h"
#include "KEResults.h"

namespace siblings {

/// A plug-in: where its path is stored, and the code for one that cannot be used.
struct PluginPlace {
  const char* folder;    // of the component that hosts it
  const char* listFile;  // in that folder; its section PLUGINS holds the path
  const char* key;
  KE_RESULT unusable;
};

inline constexpr PluginPlace kRemoteControlPlugin{"KelConf", "Kelconf.ini", "RCM", KE_MODULE_NOT_LOADED};
inline constexpr PluginPlace kInstallerPlugin{"KelUpg", "KelUpg.ini", "KEC", KE_INSTALLER_PLUGIN_UNUSABLE};

/// The functions of a plug-in; null where it does not offer one.
struct PluginTable {
  decltype(&::KE_Initialize) KE_Initialize;
  decltype(&::KE_Finalize) KE_Finalize;
  decltype(&::KECONF_SetInfo) KECONF_SetInfo;
  decltype(&::KEINSTALL_SetInfo) KEINSTALL_SetInfo;
  decltype(&::KEINSTALL_GetInetConfig) KEINSTALL_GetInetConfig;
};

/// One call of an initialised plug-in: its result; none when the plug-in lacks the function.
using PluginUse = std::optional<KE_RESULT> (*)(const PluginTable& plugin, void* context);

/// Loads and initialises the plug-in, has `use(functions, context)` called, finalises and frees it. The result of
/// `use`; the place's code when the plug-in has no full path, cannot be loaded, refuses to initialise, or lacks a
/// function, KE_Finalize included. Each of these is traced under `function`.
KE_RESULT UsePlugin(const PluginPlace& place, const char* function, PluginUse use, void* context);

/// The same for one function of the plug-in, with which `use` is called.
template <typename Function, typename Use>
KE_RESULT UsePlugin(const PluginPlace& place, const char* function, Function PluginTable::*needed, Use use) {
  struct Call {
    Function PluginTable::*needed;
    Use use;
  } call{needed, use};
  return UsePlugin(
      place, function,
      [](const PluginTable& plugin, void* context) -> std::optional<KE_RESULT> {
        const Call& one = *static_cast<Call*>(context);
        if (plugin.*one.needed == nullptr) return std::nullopt;
        return one.use(plugin.*one.needed);
      },
      &call);
}

}  // namespace siblings
