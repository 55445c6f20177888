/** @file
 * KELMNAPI.dll, the launcher module, for its authors.
 *
 * KELUtils loads it from the product's Common folder for the duration of one export. All functions named here are
 * required.
 */
#ifndef KELMNAPI_H
#define KELMNAPI_H

#include "KESibling.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Runs a launcher command and waits for it.
 *
 * @param command        such as "KELREPORT -R -force"
 * @param[out] exitCode  receives its exit code, which must be written if 0 is returned; 0 on entry
 * @return 0 if it ran
 */
int KE_SIBLING_CALL Run(const char* command, int32_t* exitCode);

/** Runs the immediate update.
 *
 * @param forceContinue  0 on the first call, 1 on every repetition
 * @param[out] exitCode  receives its exit code, which must be written if 0 is returned; 0 on entry.
 *                       1559 requests another repetition
 * @return 0 if it ran
 */
int KE_SIBLING_CALL UpdateNow(int32_t forceContinue, int32_t* exitCode);

/** Runs the immediate update with two values that KELUtils passes through from its caller.
 *
 * @param forceContinue  0 on the first call, 1 on every repetition
 * @param[out] exitCode  receives its exit code, which must be written if 0 is returned; 0 on entry.
 *                       1559 requests another repetition
 * @param first          the first value
 * @param second         the second value
 * @return 0 if it ran
 */
int KE_SIBLING_CALL UpdateNowEx(int32_t forceContinue, int32_t* exitCode, uint32_t first, uint32_t second);

/* Looked up but never called by KELUtils, and required (KE_UncalledFunction): DeliveryMsg, ContinueInstall,
 * GetInstallState. */

#ifdef __cplusplus
}
#endif

#endif
