/* KELMNAPI.dll: the launcher module, for authors of one.
 *
 * KELUtils loads it from the product's Common folder for the length of one export. All functions named here must be
 * there.
 */
#ifndef KELMNAPI_H
#define KELMNAPI_H

#include "KESibling.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Runs a component command such as "KELREPORT -R -force" and waits for it; 0 when it ran, with its exit code in
 * *exitCode. */
int KE_SIBLING_CALL Run(const char* command, int32_t* exitCode);

/* Runs the immediate update; 0 when it ran, with its exit code in *exitCode. forceContinue is 0 on the first call and 1
 * on every repetition. */
int KE_SIBLING_CALL UpdateNow(int32_t forceContinue, int32_t* exitCode);

/* The same with two values that KELUtils passes through from its caller. */
int KE_SIBLING_CALL UpdateNowEx(int32_t forceContinue, int32_t* exitCode, uint32_t first, uint32_t second);

/* Looked up but never called by KELUtils, and required (KE_UncalledFunction): DeliveryMsg, ContinueInstall,
 * GetInstallState. */

#ifdef __cplusplus
}
#endif

#endif
