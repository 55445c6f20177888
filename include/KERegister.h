/** @file
 * KERegister.dll, the registration module of a protection plug-in, for its authors.
 *
 * KELUtils loads it from the plug-in's directory and frees it after the call.
 */
#ifndef KEREGISTER_H
#define KEREGISTER_H

#include "KESibling.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Registers the plug-in again.
 *
 * @return ignored
 */
int KE_SIBLING_CALL KE_ReloadPlugins(void);

#ifdef __cplusplus
}
#endif

#endif
