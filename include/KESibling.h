/** @file
 * Common declarations of the headers for authors of sibling modules.
 *
 * KELUtils loads its sibling modules at run time with LoadLibraryEx and looks their functions up by undecorated name.
 * Every function is plain C (__cdecl), except the Do function of an action module (__stdcall). Results
 * are ignored beyond their documented use. A module must not throw into KELUtils.
 */
#ifndef KESIBLING_H
#define KESIBLING_H

#include <stdint.h>

/** @def KE_SIBLING_CALL
 * The calling convention of the sibling modules' functions. */
#ifdef _WIN32
#define KE_SIBLING_CALL __cdecl
#else
#define KE_SIBLING_CALL
#endif

/** The type of a function that a module must export but that KELUtils never calls. */
typedef void(KE_SIBLING_CALL* KE_UncalledFunction)(void);

#endif
