/* Plug-ins of the agent, for authors of one: the remote-control plug-in and the installer plug-in.
 *
 * KELUtils finds the path of a plug-in in an INI file of the component that hosts it, section PLUGINS: key RCM of
 * KelConf\Kelconf.ini for the remote-control plug-in, key KEC of KelUpg\KelUpg.ini for the installer plug-in. It loads
 * the plug-in, calls KE_Initialize, makes one call, calls KE_Finalize and frees it.
 */
#ifndef KEPLUGIN_H
#define KEPLUGIN_H

#include "KELUtils.h"
#include "KESibling.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What KECONF_SetInfo and KEINSTALL_SetInfo are told. */
enum {
  KE_INFO_USER = 4,     /* the remote-control user */
  KE_INFO_PASSWORD = 5, /* the remote-control password, as it is stored: a setting text */
  KE_INFO_DEVICE_ID = 6 /* the device identifier */
};

/* Initialises the plug-in; 0 on success. Called with mode 6, and again with 1 when that is refused. */
int KE_SIBLING_CALL KE_Initialize(int32_t mode);

/* Called last after a successful KE_Initialize; the result is ignored. */
int KE_SIBLING_CALL KE_Finalize(void);

/* Tells the plug-in a value, of one of the kinds above; what it returns is the result of the notification, 0 for
 * success. The remote-control plug-in offers KECONF_SetInfo, the installer plug-in KEINSTALL_SetInfo. */
int KE_SIBLING_CALL KECONF_SetInfo(int32_t code, const char* value);
int KE_SIBLING_CALL KEINSTALL_SetInfo(int32_t code, const char* value);

/* Fills the proxy to use, of the given size in bytes; 0 on success. KE_INSTALLER_PLUGIN_UNUSABLE makes KELUtils ask the
 * agent module instead; any other result is that of KE_GetInetConfig. Offered by the installer plug-in. */
int KE_SIBLING_CALL KEINSTALL_GetInetConfig(KE_PROXY* proxy, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
