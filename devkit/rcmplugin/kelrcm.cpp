// KELRCM.dll: the remote-control plug-in. It controls nothing, but tells in a log what it was told.
#include "KEPlugin.h"
#include "plugin/plugin.h"

int KE_SIBLING_CALL KE_Initialize(int32_t mode) { return plugin::Initialise(mode); }

int KE_SIBLING_CALL KECONF_SetInfo(int32_t code, const char* value) { return plugin::SetInfo(__func__, code, value); }

int KE_SIBLING_CALL KE_Finalize(void) { return plugin::Finalise(); }
