/** @file
 * Plug-ins of the agent, for authors of one: the remote-control plug-in and the installer plug-in.
 *
 * KELUtils finds the path of a plug-in in an INI file of the component that hosts it, section PLUGINS: key RCM of
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

/** What KECONF_SetInfo and KEINSTALL_SetInfo are told. */
enum {
  KE_INFO_USER = 4,     /**< the remote-control user */
  KE_INFO_PASSWORD = 5, /**< the remote-control password, as it is stored: a setting text */
  KE_INFO_DEVICE_ID = 6 /**< the device identifier */
};

/** Initialises the plug-in.
 *
 * @param mode  6; and on a second call 1, when 6 was refused
 * @return 0 on success
 */
int KE_SIBLING_CALL KE_Initialize(int32_t mode);

/** Called last after a successful KE_Initialize().
 *
 * @return ignored
 */
int KE_SIBLING_CALL KE_Finalize(void);

/** Tells the remote-control plug-in a value, of one of the kinds above.
 *
 * @param code   kind of the value
 * @param value  the value
 * @return the result of the notification, 0 for success
 */
int KE_SIBLING_CALL KECONF_SetInfo(int32_t code, const char* value);

/** Tells the installer plug-in a value, of one of the kinds above.
 *
 * @param code   kind of the value
 * @param value  the value
 * @return the result of the notification, 0 for success
 */
int KE_SIBLING_CALL KEINSTALL_SetInfo(int32_t code, const char* value);

/** Tells the proxy to use. Offered by the installer plug-in.
 *
 * @param[out] proxy  receives the proxy
 * @param size        of proxy in bytes, as the caller of KE_GetInetConfig() gave it
 * @return 0 on success; KE_INSTALLER_PLUGIN_UNUSABLE makes KELUtils ask the agent module instead; any other result is
 *         that of KE_GetInetConfig()
 */
int KE_SIBLING_CALL KEINSTALL_GetInetConfig(KE_PROXY* proxy, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
