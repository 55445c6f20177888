/** @file
 * The calling convention, the result codes and the records of KELUtils. KELUtils.h includes it; a program that only
 * needs the codes includes this header alone. It compiles as C89 with a stdint.h, and as C++.
 */
#ifndef KERESULTS_H
#define KERESULTS_H

#include <stdint.h>

/** @def KE_API
 * The calling convention of the exports: that of the Windows functions. */
#ifdef _WIN32
#define KE_API __stdcall
#else
#define KE_API
#endif

/** Result of an export: KE_SUCCESS or one of the codes below. */
typedef uint32_t KE_RESULT;

/** The result codes. The contract of an export lists the codes that it returns, with their causes. */
enum {
  KE_SUCCESS = 0,             /**< success */
  KE_MISSING_ARGUMENT = 1777, /**< a required argument is null or empty, or an output pointer is null */
  KE_BUFFER_TOO_SMALL = 1778, /**< the buffer's size is not greater than the value's length, or not positive */
  KE_NOT_CREATED = 1779, /**< no memory; an entry was not created; a wait, reading an exit code, or a query failed */
  KE_EXCEPTION = 1780,   /**< an exception was caught inside the export */
  KE_NO_MODULE_DIRECTORY = 1781,   /**< the directory of KELUtils.dll is unknown, or has no name in the code page */
  KE_STORE_UNUSABLE = 1782,        /**< a store or settings file cannot be opened or written, or a value is missing */
  KE_CRYPTO_NOT_LOADED = 1783,     /**< the crypto module could not be loaded */
  KE_CRYPTO_FAILED = 1784,         /**< encryption, decryption or an operation on an encrypted file failed */
  KE_BAD_SCHEDULER_COMMAND = 1785, /**< a scheduler command has no blank after the program name; no export returns it */
  KE_SCHEDULER_NOT_STARTED = 1786, /**< the scheduler could not be started */
  KE_SCHEDULER_FAILED = 1787,      /**< the scheduler returned a non-zero exit code */
  KE_SCHEDULER_TIMEOUT = 1788,     /**< the scheduler did not finish within 90 seconds */
  KE_OUT_OF_RANGE = 1789,          /**< an argument is out of range */
  KE_AGENT_NOT_LOADED = 1790,      /**< the agent module could not be loaded */
  KE_AGENT_INCOMPLETE = 1791,      /**< the agent module lacks configuration functions */
  KE_AGENT_READ_FAILED = 1792,     /**< reading an agent configuration record failed */
  KE_AGENT_WRITE_FAILED = 1793,    /**< writing an agent configuration record failed */
  KE_INSTALLER_PLUGIN_UNUSABLE = 1794,  /**< the installer plug-in is not usable */
  KE_INSTALL_HELPER_NOT_STARTED = 1796, /**< the installer helper could not be started */
  KE_PROGRAM_NOT_STARTED = 1797,        /**< a program could not be started, or the launcher's Run failed */
  KE_PROMPT_FAILED = 1798,              /**< the prompt program ended with an unexpected exit code */
  KE_LAUNCHER_NOT_LOADED = 1799,        /**< the launcher module could not be loaded */
  KE_REGISTRY_UNUSABLE = 1800,  /**< a proxy record write failed; the plug-in registry key could not be opened */
  KE_MODULE_NOT_LOADED = 1801,  /**< an action module, plug-in or the prompt program could not be loaded */
  KE_EVENTS_UNAVAILABLE = 1802, /**< the event module is unavailable */
  KE_EVENT_NOT_SENT = 1803,     /**< an event was not sent, or has no description */
  KE_UPDATE_FAILED_1566 = 1804, /**< the launcher's update exit code 1566 */
  KE_UPDATE_FAILED_1558 = 1805, /**< the launcher's update exit code 1558 */
  KE_UPDATE_FAILED_1565 = 1806, /**< the launcher's update exit code 1565 */
  KE_UPDATE_FAILED_5000 = 1807, /**< the launcher's update exit code 5000 */
  KE_UPDATE_FAILED_1567 = 1808  /**< the launcher's update exit code 1567 */
};

/** A proxy and its credentials. Texts are zero-terminated. */
typedef struct KE_PROXY {
  char host[256];         /**< host name or address; empty: no proxy */
  int32_t port;           /**< port number */
  uint8_t hasCredentials; /**< 1 when user and password are set, else 0 */
  char user[256];         /**< user name, in UTF-8 */
  char password[256];     /**< password, in UTF-8, in plain text: wipe it after use */
} KE_PROXY;

/** A calendar time, laid out as the first fields of the C library's tm. */
typedef struct KE_TIME {
  int32_t seconds; /**< 0 to 59 */
  int32_t minutes; /**< 0 to 59 */
  int32_t hours;   /**< 0 to 23 */
  int32_t day;     /**< of the month, from 1 */
  int32_t month;   /**< 0 to 11 */
  int32_t year;    /**< years since 1900 */
} KE_TIME;

#endif
