// Plug-ins that other components of the agent host, used for a single call each.
#pragma once

#include <optional>

#include "KEPlugin.h"
#include "KEResults.h"
#include "siblings/sibling_table.h"
#include "win/module.h"

namespace siblings {

// The functions of a plug-in, in lookup order.
#define KE_PLUGIN_FUNCTIONS(ROW_CALLED, ROW_UNCALLED) \
  ROW_CALLED(KE_Initialize, kRequired)                \
  ROW_CALLED(KE_Finalize, kOptional)                  \
  ROW_CALLED(KECONF_SetInfo, kOptional)               \
  ROW_CALLED(KEINSTALL_SetInfo, kOptional)            \
  ROW_CALLED(KEINSTALL_GetInetConfig, kOptional)

/// The functions of a plug-in; null for those it lacks.
KE_FUNCTION_TABLE(PluginTable, KE_PLUGIN_FUNCTIONS);

/// One call of an initialised plug-in: its result; none when the plug-in lacks the function.
using PluginUse = std::optional<KE_RESULT> (*)(const PluginTable& plugin, void* context);

/// Loads and initialises the plug-in, calls `use(functions, context)`, finalises and frees the plug-in. The result of
/// `use`; the place's code when the plug-in has no full path, cannot be loaded, fails to initialise, or lacks a
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
