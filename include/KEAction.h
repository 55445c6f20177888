/** @file
 * An action module: what a sibling product can be asked to do, for authors of one.
 *
 * KELUtils loads NAME.dll from the folder NAME beside its own folder, calls Do, and frees the module. Every call may be
 * the module's first and last: what must last is kept outside of it.
 */
#ifndef KEACTION_H
#define KEACTION_H

#include <stdint.h>

/** @def KE_ACTION_CALL
 * Unlike the functions of other sibling modules, this one has the standard Windows calling convention. */
#ifdef _WIN32
#define KE_ACTION_CALL __stdcall
#else
#define KE_ACTION_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Carries out an action. What the arguments mean is the module's own affair;
 * KELUtils calls KELUPG with an action first, and 0 second:
 * - 1: the version of the agent has changed
 * - 2: the agent is about to be uninstalled
 *
 * Exported as plain "Do". Must not throw.
 *
 * @param first   the action
 * @param second  more about it
 * @return 0 for success; KELUtils ignores it
 */
uint32_t KE_ACTION_CALL Do(uint32_t first, uint32_t second);

#ifdef __cplusplus
}
#endif

#endif
