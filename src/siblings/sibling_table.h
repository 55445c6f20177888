// The names and folders of the sibling modules and programs. Pure data, shared with the tools. The trace library is
// loaded one layer below (trace/log_configuration.h).
#pragma once

#include "KEResults.h"

namespace siblings {

/// A sibling's file, and the folders in which it is looked for, in this order. A folder is next to the module
/// directory; "" is the module directory itself; null is no second folder.
struct Sibling {
  const char* file;
  const char* folder;
  const char* fallback = nullptr;
};

inline constexpr Sibling kCryptoModule{"ApiCr.dll", ""};  // for value files: Common of the install path
inline constexpr Sibling kAgentModule{"KELAGAPI.dll", "Common", ""};
inline constexpr Sibling kLauncherModule{"KELMNAPI.dll", "Common", ""};  // the second one for KE_SendReport alone
inline constexpr Sibling kEventModule{"TvEvAPI.dll", "KELTVEVT"};
inline constexpr Sibling kUpgradeAction{"KELUPG.dll", "KELUPG"};
inline constexpr Sibling kScheduler{"zumat.exe", "Scheduler", ""};
inline constexpr Sibling kPluginManager{"KEPLPMNG.exe", "KesLpmng"};
inline constexpr Sibling kInstallHelper{"KepWInst.exe", "KepWInst", ""};
inline constexpr Sibling kPromptProgram{"KePIRes.exe", "KESAgent"};

/// The registration module of a protection plug-in, in a folder that the registry names.
inline constexpr char kPluginReloadFile[] = "KERegister.dll";

/// A plug-in: where its path is stored, and the code for one that cannot be used.
struct PluginPlace {
  const char* folder;    // of the component that hosts it
  const char* listFile;  // in that folder; its section PLUGINS holds the path
  const char* key;
  KE_RESULT unusable;
};

inline constexpr PluginPlace kRemoteControlPlugin{"KelConf", "Kelconf.ini", "RCM", KE_MODULE_NOT_LOADED};
inline constexpr PluginPlace kInstallerPlugin{"KelUpg", "KelUpg.ini", "KEC", KE_INSTALLER_PLUGIN_UNUSABLE};

}  // namespace siblings
