/** @file
 * TvEvAPI.dll, the event module, for its authors.
 *
 * KELUtils loads it from the folder KELTVEVT next to its own directory, calls TEVT_StartAPI, makes one event call,
 * calls TEVT_StopAPI and frees it. All functions named here are required. Several threads may do so at once.
 */
#ifndef TVEVAPI_H
#define TVEVAPI_H

#include "KESibling.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The common part of every event. The texts are owned by the caller and valid during the call only. */
typedef struct EventInfo {
  uint32_t eventClass;     /**< class of the event */
  const char* computer;    /**< name of the machine */
  const char* product;     /**< the product that reports; may be null */
  uint32_t extra;          /**< a value passed through */
  const char* text;        /**< may be null */
  const char* description; /**< may be null */
} EventInfo;

/** Opens the connection to the event service.
 *
 * @return 0 on success
 */
int KE_SIBLING_CALL TEVT_StartAPI(void);

/** Closes the connection to the event service.
 *
 * @return ignored
 */
int KE_SIBLING_CALL TEVT_StopAPI(void);

/** Reports the state of a scan.
 *
 * @param info    the common part
 * @param text    always "Unknown"
 * @param status  of the scan
 * @param taskId  of the scan; may be null
 * @return 0 if the event was queued
 */
int KE_SIBLING_CALL TEVT_ScanState(const EventInfo* info, const char* text, int32_t status, const char* taskId);

/** Reports a forced restart of the computer.
 *
 * @param info  the common part
 * @param text  always "0"
 * @return 0 if the event was queued
 */
int KE_SIBLING_CALL TEVT_RebootForced(const EventInfo* info, const char* text);

/** Reports an installation or uninstallation.
 *
 * @param info  the common part
 * @param flag  always 1: the agent is about to be uninstalled
 * @return 0 if the event was queued
 */
int KE_SIBLING_CALL TEVT_Install(const EventInfo* info, int32_t flag);

/** Reports an error of the agent.
 *
 * @param info        the common part
 * @param source      of the error, passed through
 * @param identifier  such as "KEAGENT-403"
 * @return 0 if the event was queued
 */
int KE_SIBLING_CALL TEVT_ErrorEvent(const EventInfo* info, uint32_t source, const char* identifier);

/* Looked up but never called by KELUtils, and required (KE_UncalledFunction): TEVT_ProtectionState,
 * TEVT_InternetUpdate, TEVT_Update, TEVT_Upgrade, TEVT_Replicate, TEVT_ConfigurationChange, TEVT_ServiceState,
 * TEVT_NeedRestart, TEVT_QuarantineInformation, TEVT_MalwareDetection, TEVT_WarningEvent, TEVT_InformationEvent. */

#ifdef __cplusplus
}
#endif

#endif
