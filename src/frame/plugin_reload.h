// The registration module of a protection plug-in: bound from the plug-in's directory and freed after its one call.
#pragma once

#include "frame/sibling_names.h"

namespace frame {

/// The function of KERegister.dll; null while not bound.
struct PluginReloadTable {
  KE_PLUGIN_RELOAD_FUNCTIONS(KE_CALLED_MEMBER, KE_UNCALLED_MEMBER)
};

/// The bound function.
const PluginReloadTable& PluginReload() noexcept;

/// Binds the module from `folder`, which ends in a backslash; true at once when it is bound. A failure is traced.
bool LoadPluginReload(const char* folder) noexcept;

/// Frees the module, also one without the function.
void FreePluginReload() noexcept;

}  // namespace frame
