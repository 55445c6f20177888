/** @file
 * The interface of the remote-control plug-in and the installer plug-in, for their authors.
 *
 * KELUtils finds the path of a plug-in in an INI file of the module that hosts it, section PLUGINS: key RCM of
 * `KelConf\Kelconf.ini` for the remote-control plug-in, key KEC of `KelUpg\KelUpg.ini` for the installer plug-in. It
 * must be a full path. KELUtils loads the plug-in, calls KE_Initialize, makes one call, calls KE_Finalize and frees it.
 */
#ifndef KEPLUGIN_H
#define KEPLUGIN_H

#include "KEResults.h"
#include "KESibling.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Kinds of values passed to KECONF_SetInfo and KEINSTALL_SetInfo. */
enum {
  KE_INFO_USER = 4,     /**< the remote-control user */
  KE_INFO_PASSWORD = 5, /**< the remote-control password, as it is stored: a setting text */
  KE_INFO_DEVICE_ID = 6 /**< the device identifier */
};

/** Initialises the plug-in.
 *
 * @param mode  6; if that fails, a second call with 1
 * @return 0 on success
 */
int KE_SIBLING_CALL KE_Initialize(int32_t mode);

/** Called last after a successful KE_Initialize().
 *
 * @return ignored
 */
int KE_SIBLING_CALL KE_Finalize(void);

/** Notifies the remote-control plug-in of a value.
 *
 * @param code   kind of the value
 * @param value  the value
 * @return 0 on success
 */
int KE_SIBLING_CALL KECONF_SetInfo(int32_t code, const char* value);

/** Notifies the installer plug-in of a value.
 *
 * @param code   kind of the value
 * @param value  the value
 * @return 0 on success
 */
int KE_SIBLING_CALL KEINSTALL_SetInfo(int32_t code, const char* value);

/** Returns the proxy to use. A function of the installer plug-in.
 *
 * @param[out] proxy  receives the proxy
 * @param size        of proxy in bytes, as the caller of KE_GetInetConfig() gave it
 * @return 0 on success; after KE_INSTALLER_PLUGIN_UNUSABLE KELUtils asks the agent module; KE_GetInetConfig() returns
 *         any other result
 */
int KE_SIBLING_CALL KEINSTALL_GetInetConfig(KE_PROXY* proxy, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
