// The functions of messages, addresses and ask times, which KELUtils looks up and never calls. Their parameters are not
// published; a C function without parameters leaves its caller's arguments alone, whatever they are.
#include "KESibling.h"
#include "kelagapi/call_log.h"

#define NOT_SUPPORTED(name) \
  extern "C" std::uint32_t KE_SIBLING_CALL name(void) { return kelagapi::Logged(__func__, kelagapi::kNotSupported); }

NOT_SUPPORTED(KE_AGAPI_SendMsgEx)
NOT_SUPPORTED(KE_AGAPI_GetURL)
NOT_SUPPORTED(KE_AGAPI_GetURLEx)
NOT_SUPPORTED(KE_AGAPI_GetMsgFromAgent)
NOT_SUPPORTED(KE_AGAPI_FreeMsg)
NOT_SUPPORTED(KE_AGAPI_GetElementCount)
NOT_SUPPORTED(KE_AGAPI_GetElement)
NOT_SUPPORTED(KE_AGAPI_GetElementName)
NOT_SUPPORTED(KE_AGAPI_GetMsgType)
NOT_SUPPORTED(KE_AGAPI_GetMsgParams)
NOT_SUPPORTED(KE_AGAPI_SendMsgToEx)
NOT_SUPPORTED(KE_AGAPI_SendMsgTo)
NOT_SUPPORTED(KE_AGAPI_CreateMsg)
NOT_SUPPORTED(KE_AGAPI_AddFileElement)
NOT_SUPPORTED(KE_AGAPI_AddFileElementCompress)
NOT_SUPPORTED(KE_AGAPI_AddXMLElement)
NOT_SUPPORTED(KE_AGAPI_SaveElementToFile)
NOT_SUPPORTED(KE_AGAPI_ReplyMsgToEx)
NOT_SUPPORTED(KE_AGAPI_ReplyMsgTo)
NOT_SUPPORTED(KE_AGAPI_GetMsgSourceData)
NOT_SUPPORTED(KE_AGAPI_SendMsg)
NOT_SUPPORTED(KE_AGAPI_GetAskTime)
NOT_SUPPORTED(KE_AGAPI_SetAskTime)
NOT_SUPPORTED(KE_AGAPI_CanBeProxy)
