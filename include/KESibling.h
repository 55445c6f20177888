/** @file
 * What the headers for authors of sibling modules share.
 *
 * KELUtils loads its sibling modules at run time with LoadLibraryEx and looks their functions up by undecorated name.
 * Every function is plain C (__cdecl), except the Do function of an action module (__stdcall). What a function returns
 * beyond the stated use is ignored. A module must not throw into KELUtils.
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

/** The type under which KELUtils keeps a function that a module must offer but that KELUtils itself never calls: its
 * parameters are between the module and its other callers. */
typedef void(KE_SIBLING_CALL* KE_UncalledFunction)(void);

#endif
