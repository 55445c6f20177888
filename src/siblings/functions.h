// The functions of the sibling modules, each list in lookup order. A row names a function, its type and whether the
// table is of use without it; tables and lookup lists are made from the rows.
#pragma once

#include "ApiCr.h"
#include "KELAGAPI.h"
#include "KELMNAPI.h"
#include "KERegister.h"
#include "TvEvAPI.h"
#include "win/module.h"

// A function declared in the sibling's header (ROW_CALLED), or one whose parameters are not KELUtils' business
// (ROW_UNCALLED).
#define KE_AGENT_API_FUNCTIONS(ROW_CALLED, ROW_UNCALLED)   \
  ROW_CALLED(KE_AGAPI_Initialize, kOptional)               \
  ROW_CALLED(KE_AGAPI_Finalize, kOptional)                 \
  ROW_CALLED(KE_AGAPI_SetConfig, kOptional)                \
  ROW_CALLED(KE_AGAPI_GetConfig, kOptional)                \
  ROW_CALLED(KE_AGAPI_GetProxyConfig, kOptional)           \
  ROW_CALLED(KE_AGAPI_SetProxyConfig, kOptional)           \
  ROW_UNCALLED(KE_AGAPI_SendMsgEx, kRequired)              \
  ROW_UNCALLED(KE_AGAPI_GetURL, kRequired)                 \
  ROW_UNCALLED(KE_AGAPI_GetURLEx, kRequired)               \
  ROW_UNCALLED(KE_AGAPI_GetMsgFromAgent, kRequired)        \
  ROW_UNCALLED(KE_AGAPI_FreeMsg, kRequired)                \
  ROW_UNCALLED(KE_AGAPI_GetElementCount, kRequired)        \
  ROW_UNCALLED(KE_AGAPI_GetElement, kRequired)             \
  ROW_UNCALLED(KE_AGAPI_GetElementName, kRequired)         \
  ROW_UNCALLED(KE_AGAPI_GetMsgType, kRequired)             \
  ROW_UNCALLED(KE_AGAPI_GetMsgParams, kRequired)           \
  ROW_UNCALLED(KE_AGAPI_SendMsgToEx, kRequired)            \
  ROW_UNCALLED(KE_AGAPI_SendMsgTo, kRequired)              \
  ROW_UNCALLED(KE_AGAPI_CreateMsg, kRequired)              \
  ROW_UNCALLED(KE_AGAPI_AddFileElement, kRequired)         \
  ROW_UNCALLED(KE_AGAPI_AddFileElementCompress, kRequired) \
  ROW_UNCALLED(KE_AGAPI_AddXMLElement, kRequired)          \
  ROW_UNCALLED(KE_AGAPI_SaveElementToFile, kRequired)      \
  ROW_UNCALLED(KE_AGAPI_ReplyMsgToEx, kRequired)           \
  ROW_UNCALLED(KE_AGAPI_ReplyMsgTo, kRequired)             \
  ROW_UNCALLED(KE_AGAPI_GetMsgSourceData, kRequired)       \
  ROW_UNCALLED(KE_AGAPI_SendMsg, kRequired)                \
  ROW_CALLED(KE_AGAPI_AskProxyConfig, kRequired)           \
  ROW_UNCALLED(KE_AGAPI_GetAskTime, kRequired)             \
  ROW_UNCALLED(KE_AGAPI_SetAskTime, kRequired)             \
  ROW_UNCALLED(KE_AGAPI_CanBeProxy, kRequired)

#define KE_CRYPTO_FUNCTIONS(ROW_CALLED, ROW_UNCALLED) \
  ROW_UNCALLED(APIcr_GetVersion, kRequired)           \
  ROW_UNCALLED(APIcr_GetHash, kRequired)              \
  ROW_UNCALLED(APIcr_GetHashFromFile, kRequired)      \
  ROW_UNCALLED(APIcr_GetRandomKey, kRequired)         \
  ROW_CALLED(APIcr_EncryptBuffer, kRequired)          \
  ROW_CALLED(APIcr_DecryptBuffer, kRequired)          \
  ROW_UNCALLED(APIcr_EncryptFile, kRequired)          \
  ROW_UNCALLED(APIcr_DecryptFile, kRequired)          \
  ROW_UNCALLED(APIcr_EncryptWithPublic, kRequired)    \
  ROW_UNCALLED(APIcr_DecryptWithPrivate, kRequired)   \
  ROW_UNCALLED(APIcr_EncryptHash, kRequired)          \
  ROW_UNCALLED(APIcr_DecryptHash, kRequired)          \
  ROW_UNCALLED(APIcr_MakeKeys, kRequired)

#define KE_EVENT_API_FUNCTIONS(ROW_CALLED, ROW_UNCALLED) \
  ROW_CALLED(TEVT_StartAPI, kRequired)                   \
  ROW_CALLED(TEVT_StopAPI, kRequired)                    \
  ROW_UNCALLED(TEVT_ProtectionState, kRequired)          \
  ROW_CALLED(TEVT_Install, kRequired)                    \
  ROW_UNCALLED(TEVT_InternetUpdate, kRequired)           \
  ROW_UNCALLED(TEVT_Update, kRequired)                   \
  ROW_UNCALLED(TEVT_Upgrade, kRequired)                  \
  ROW_UNCALLED(TEVT_Replicate, kRequired)                \
  ROW_UNCALLED(TEVT_ConfigurationChange, kRequired)      \
  ROW_UNCALLED(TEVT_ServiceState, kRequired)             \
  ROW_UNCALLED(TEVT_NeedRestart, kRequired)              \
  ROW_CALLED(TEVT_RebootForced, kRequired)               \
  ROW_UNCALLED(TEVT_QuarantineInformation, kRequired)    \
  ROW_UNCALLED(TEVT_MalwareDetection, kRequired)         \
  ROW_CALLED(TEVT_ScanState, kRequired)                  \
  ROW_CALLED(TEVT_ErrorEvent, kRequired)                 \
  ROW_UNCALLED(TEVT_WarningEvent, kRequired)             \
  ROW_UNCALLED(TEVT_InformationEvent, kRequired)

#define KE_PLUGIN_RELOAD_FUNCTIONS(ROW_CALLED, ROW_UNCALLED) ROW_CALLED(KE_ReloadPlugins, kRequired)

#define KE_LAUNCHER_FUNCTIONS(ROW_CALLED, ROW_UNCALLED) \
  ROW_CALLED(Run, kRequired)                            \
  ROW_UNCALLED(DeliveryMsg, kRequired)                  \
  ROW_UNCALLED(ContinueInstall, kRequired)              \
  ROW_UNCALLED(GetInstallState, kRequired)              \
  ROW_CALLED(UpdateNow, kRequired)                      \
  ROW_CALLED(UpdateNowEx, kRequired)
