/** @file
 * KELAGAPI.dll, the agent module, for its authors.
 *
 * KELUtils loads it from the product's Common folder, else from its own directory, in the exports that need the agent,
 * and frees it at their end. The six configuration functions are optional for loading; the proxy exports need all of
 * them except KE_AGAPI_Initialize and KE_AGAPI_Finalize. All other functions are required.
 */
#ifndef KELAGAPI_H
#define KELAGAPI_H

#include "KESibling.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Called once after the module was loaded.
 *
 * @return ignored
 */
int KE_SIBLING_CALL KE_AGAPI_Initialize(void);

/** Called once before the module is freed.
 *
 * @return ignored
 */
int KE_SIBLING_CALL KE_AGAPI_Finalize(void);

/** Reads a configuration record as a whole. The records that KELUtils knows are described below.
 *
 * @param cls          class of the record
 * @param item         number of the record in its class
 * @param[out] record  receives the record
 * @param size         of the record in bytes
 * @return 0 on success
 */
uint32_t KE_SIBLING_CALL KE_AGAPI_GetConfig(uint32_t cls, uint32_t item, void* record, uint32_t size);

/** Writes a configuration record as a whole.
 *
 * @param cls     class of the record
 * @param item    number of the record in its class
 * @param record  the record; not changed
 * @param size    of the record in bytes
 * @return 0 on success
 */
uint32_t KE_SIBLING_CALL KE_AGAPI_SetConfig(uint32_t cls, uint32_t item, void* record, uint32_t size);

/** The records that KELUtils knows. */
enum {
  KE_AGENT_CONFIG_CLASS = 1,      /**< the class of them all */
  KE_AGENT_SERVER_ITEM = 6,       /**< a KE_AGENT_SERVER_RECORD */
  KE_AGENT_PROXY_ITEM = 7,        /**< a KE_AGENT_PROXY_RECORD */
  KE_AGENT_STATIC_PROXY_ITEM = 10 /**< a KE_STATIC_PROXY_RECORD */
};

/** The record that holds the address of the management server: 2564 bytes. KELUtils reads it, changes the address and
 * writes it back; the module defines the rest. The first four bytes are zero when it is read. */
typedef struct KE_AGENT_SERVER_RECORD {
  uint8_t before[1028]; /**< defined by the module */
  char server[512];     /**< the address, zero-terminated */
  uint8_t after[1024];  /**< defined by the module */
} KE_AGENT_SERVER_RECORD;

/** The proxy of the agent: 532 bytes. Texts are zero-terminated; unused bytes are zero. */
typedef struct KE_AGENT_PROXY_RECORD {
  uint32_t flags;       /**< a sum of the values below */
  uint8_t inUse;        /**< 1: the proxy is in use */
  char address[256];    /**< host, ":" and port */
  char user[128];       /**< in UTF-8 */
  char password[128];   /**< in UTF-8, in plain text */
  uint8_t reserved[15]; /**< zero */
} KE_AGENT_PROXY_RECORD;

/** Flags of a KE_AGENT_PROXY_RECORD. */
enum {
  KE_PROXY_IN_USE = 1,      /**< the proxy is in use */
  KE_PROXY_HAS_ADDRESS = 2, /**< address counts */
  KE_PROXY_HAS_USER = 4,    /**< user counts */
  KE_PROXY_HAS_PASSWORD = 8 /**< password counts */
};

/** The static proxy, by host name or addresses: 8536 bytes. Texts are zero-terminated; unused bytes are zero. */
typedef struct KE_STATIC_PROXY_RECORD {
  uint32_t flags;          /**< a sum of the values below */
  uint8_t reserved[20];    /**< zero */
  uint8_t enabled;         /**< 1: a host or an address list is given */
  char host[256];          /**< host name */
  char addresses[320];     /**< list of addresses */
  uint8_t reserved2[7935]; /**< zero */
} KE_STATIC_PROXY_RECORD;

/** Flags of a KE_STATIC_PROXY_RECORD. */
enum {
  KE_STATIC_PROXY = 32,               /**< always */
  KE_STATIC_PROXY_HAS_HOST = 64,      /**< host counts */
  KE_STATIC_PROXY_HAS_ADDRESSES = 128 /**< addresses counts */
};

/** Reads the proxy in use. An empty address makes KELUtils read the stored record with KE_AGAPI_GetConfig().
 *
 * @param[out] record  receives a KE_AGENT_PROXY_RECORD
 * @param size         of the record in bytes
 * @return 0 on success
 */
uint32_t KE_SIBLING_CALL KE_AGAPI_GetProxyConfig(void* record, uint32_t size);

/** Writes the proxy. Looked up, but not called by KELUtils.
 *
 * @param record  a KE_AGENT_PROXY_RECORD
 * @param size    of the record in bytes
 * @return 0 on success
 */
uint32_t KE_SIBLING_CALL KE_AGAPI_SetProxyConfig(void* record, uint32_t size);

/** Makes the module detect the proxy in use.
 *
 * @return 0 if KE_AGAPI_GetProxyConfig() can return it
 */
uint32_t KE_SIBLING_CALL KE_AGAPI_AskProxyConfig(void);

/* Looked up but never called by KELUtils, and required (KE_UncalledFunction): KE_AGAPI_SendMsgEx, KE_AGAPI_GetURL,
 * KE_AGAPI_GetURLEx, KE_AGAPI_GetMsgFromAgent, KE_AGAPI_FreeMsg, KE_AGAPI_GetElementCount, KE_AGAPI_GetElement,
 * KE_AGAPI_GetElementName, KE_AGAPI_GetMsgType, KE_AGAPI_GetMsgParams, KE_AGAPI_SendMsgToEx, KE_AGAPI_SendMsgTo,
 * KE_AGAPI_CreateMsg, KE_AGAPI_AddFileElement, KE_AGAPI_AddFileElementCompress, KE_AGAPI_AddXMLElement,
 * KE_AGAPI_SaveElementToFile, KE_AGAPI_ReplyMsgToEx, KE_AGAPI_ReplyMsgTo, KE_AGAPI_GetMsgSourceData, KE_AGAPI_SendMsg,
 * KE_AGAPI_GetAskTime, KE_AGAPI_SetAskTime, KE_AGAPI_CanBeProxy. */

#ifdef __cplusplus
}
#endif

#endif
