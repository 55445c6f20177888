/** @file
 * TvLogSys.dll, the trace library, for its authors.
 *
 * KELUtils loads it from the product's Common folder at the start of every export and frees it at the end. All six
 * functions are required. Calls of LogSys_DumpLogFile and LogSys_DumpLogDebugMsg come from any thread, several at
 * once; the others are serialised by KELUtils.
 */
#ifndef TVLOGSYS_H
#define TVLOGSYS_H

#include "KESibling.h"

#ifdef __cplusplus
extern "C" {
#endif

#pragma pack(push, 1)
/** Settings of a log file: 276 bytes. */
typedef struct LogFileSettings {
  uint32_t level;       /**< lines of a higher level are dropped */
  char path[260];       /**< the log file, zero-terminated */
  uint32_t maximumSize; /**< in bytes */
  uint32_t optionA;     /**< always 1 */
  uint32_t optionB;     /**< always 1 */
} LogFileSettings;
#pragma pack(pop)

/** Opens a log.
 *
 * @param[out] handle  receives a handle, which is never 0
 * @return 0 on success
 */
int KE_SIBLING_CALL LogSys_InitializeLogSystem(uint32_t* handle);

/** Closes a log. The handle may still be passed to the dump functions afterwards, which then do nothing.
 *
 * @param handle  of the log
 * @return ignored
 */
int KE_SIBLING_CALL LogSys_FinalizeLogSystem(uint32_t handle);

/** Sets the log file of an open log.
 *
 * @param handle    of the log
 * @param settings  the file; copied
 * @return 0 on success
 */
int KE_SIBLING_CALL LogSys_ConfigureLogFile(uint32_t handle, const LogFileSettings* settings);

/** Enables output to the debugger for an open log.
 *
 * @param handle  of the log
 * @param level   lines of a higher level are dropped
 * @return 0 on success
 */
int KE_SIBLING_CALL LogSys_ConfigureLogDebugMsg(uint32_t handle, const uint32_t* level);

/** Formats one line as printf does and writes it to the log file.
 *
 * @param handle  of the log
 * @param level   of the line
 * @param format  of the line, as for printf, including its line end
 * @return ignored
 */
int KE_SIBLING_CALL LogSys_DumpLogFile(uint32_t handle, uint32_t level, const char* format, ...);

/** Formats one line as printf does and writes it to the debugger.
 *
 * @param handle  of the log
 * @param level   of the line
 * @param format  of the line, as for printf, including its line end
 * @return ignored
 */
int KE_SIBLING_CALL LogSys_DumpLogDebugMsg(uint32_t handle, uint32_t level, const char* format, ...);

#ifdef __cplusplus
}
#endif

#endif
