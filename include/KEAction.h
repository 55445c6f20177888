/** @file
 * The interface of action modules, for their authors.
 *
 * KELUtils loads NAME.dll from the folder NAME next to its own folder, calls Do, and frees the module. The module
 * keeps no state between calls.
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

/** Carries out an action. The module defines the arguments; KELUtils calls KELUPG with one of these actions and 0:
 * - 1: the version of the agent has changed
 * - 2: the agent is about to be uninstalled
 *
 * Exported as plain "Do". Must not throw.
 *
 * @param first   the action
 * @param second  an argument of the action
 * @return 0 on success; ignored
 */
uint32_t KE_ACTION_CALL Do(uint32_t first, uint32_t second);

#ifdef __cplusplus
}
#endif

#endif
