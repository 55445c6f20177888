/** @file
 * KELUtils: the exported interface.
 *
 * KELUtils.dll is a 32-bit DLL. Every export is a plain C function with the standard Windows calling convention and an
 * undecorated name. This header compiles as C89 with a stdint.h, and as C++.
 *
 * Texts are zero-terminated strings of 8-bit characters in the system's code page. Text arguments are only read, and
 * only during the call. A text getter takes the caller's buffer and its size in bytes; it never writes past that size
 * and copies a value only when the size is greater than the value's length, so that the terminating zero fits.
 *
 * An INI file whose full path has 260 characters or more, and a text for an INI file that has 32,767 or more, are not
 * passed to Windows: the write fails, and the read gives the empty text.
 *
 * Results: an export that returns a KE_RESULT answers KE_SUCCESS or one of the codes that its comment lists. Two, the
 * tests of the uninstall password, answer 1 or 0. No exception leaves an export.
 *
 * Threads: every export may be called from any thread, and works on the caller's thread. A group of exports that has
 * more to say about threads does so. The exports load other DLLs, and some wait for programs: none is called from a
 * DllMain.
 *
 * Programs that load the library at run time have a type for each export, KE_Name_t for KE_Name:
 * @code{.c}
 * KE_GetAgentID_t getAgentId = (KE_GetAgentID_t)(void (*)(void))GetProcAddress(module, "KE_GetAgentID");
 * @endcode
 */
#ifndef KELUTILS_H
#define KELUTILS_H

#include <stdint.h>

#include "KEResults.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @defgroup ke_store Store accessors
 *
 * The identity and state of the agent live in INTEGRA.DAT, in the folder KESAgent beside the DLL's own folder;
 * docs/file-formats.md describes it. Every accessor first makes the cached copy current, which repairs a damaged or
 * missing file, and then reads or changes one value. When that fails, every output stays as it was, unless its export
 * says otherwise.
 *
 * A buffer's size is in bytes. Values have no limit of their own. A getter does not tell the length of its value: one
 * that answers KE_BUFFER_TOO_SMALL is called again with a larger buffer:
 * @code{.c}
 * char* id = NULL;
 * int32_t size = 64;
 * KE_RESULT result;
 * do {
 *   free(id);
 *   size *= 2;
 *   id = malloc(size);
 *   result = id ? KE_GetAgentID(id, size) : KE_NOT_CREATED;
 * } while (result == KE_BUFFER_TOO_SMALL && size < 65536);
 * @endcode
 *
 * A setter first looks for the certificate, as KE_GetCertificate() does, so that a damaged store is repaired before it
 * is changed. Without ApiCr.dll a store in plain text is changed too, and written in plain text, with KE_SUCCESS.
 *
 * A setter replaces the file atomically: a process killed at any point leaves the old values or the new ones, never a
 * mixture. Exports that change or repair the store wait for other processes that do so, once and for five seconds at
 * most; after a wait in vain they proceed, and for the next minute no call of the process waits. The last write then
 * wins. A getter that has nothing to repair never waits. While another program holds a file open, replacing it is
 * retried for a second, for each file; after that the file is overwritten in place.
 *
 * Threads: accessors of the store may run at the same time, in any number of threads: each one sees or leaves a whole
 * value. A change of another process is seen by the next call.
 * @{ */

/** The identifier of the agent.
 *
 * A missing or empty value is looked for in INTEGRA.BAK and then in INTEGRA.START. The copy that is looked into
 * replaces INTEGRA.DAT, and with it every other value.
 *
 * @param[out] buffer  receives the value
 * @param size         of buffer in bytes; must be greater than the value's length
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not greater than the value's length; the buffer stays as it was
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or no copy
 *                                 of the store holds the value
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetAgentID(char* buffer, int32_t size);

/** The identifier of the customer. A missing or empty value is looked for in the backup and the start copy, as by
 * KE_GetAgentID().
 *
 * @param[out] buffer  receives the value
 * @param size         of buffer in bytes; must be greater than the value's length
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not greater than the value's length; the buffer stays as it was
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or no copy
 *                                 of the store holds the value
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetCustomerId(char* buffer, int32_t size);

/** The certificate of the agent. A missing or empty value is looked for in the backup and the start copy, as by
 * KE_GetAgentID().
 *
 * @param[out] buffer  receives the value
 * @param size         of buffer in bytes; must be greater than the value's length
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not greater than the value's length; the buffer stays as it was
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or no copy
 *                                 of the store holds the value
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetCertificate(char* buffer, int32_t size);

/** The identifier of the device, which the console gives.
 *
 * @param[out] buffer  receives the value; the empty text when it is missing
 * @param size         of buffer in bytes; must be greater than the value's length
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not positive, or not greater than the value's length; the buffer stays as it
 *                                 was
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or the
 *                                 value is missing or empty
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetDeviceID(char* buffer, int32_t size);

/** The user of the remote control.
 *
 * @param[out] buffer  receives the value; the empty text when it is missing
 * @param size         of buffer in bytes; must be greater than the value's length
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not positive, or not greater than the value's length; the buffer stays as it
 *                                 was
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or the
 *                                 value is missing or empty
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetUserRCM(char* buffer, int32_t size);

/** The password of the remote control, as it is stored: by convention a setting text. KE_GetPasswordRCMDec() deciphers
 * it.
 *
 * @param[out] buffer  receives the value; the empty text when it is missing
 * @param size         of buffer in bytes; must be greater than the value's length
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not positive, or not greater than the value's length; the buffer stays as it
 *                                 was
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or the
 *                                 value is missing or empty
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetPasswordRCM(char* buffer, int32_t size);

/** The version of the agent. A missing value is the empty text, and a success.
 *
 * @param[out] buffer  receives the value
 * @param size         of buffer in bytes; must be greater than the value's length
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not greater than the value's length; the buffer stays as it was
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetAgentVersion(char* buffer, int32_t size);

/** The date of the server, as the text that was stored. A missing value is the empty text, and a success.
 *
 * @param[out] buffer  receives the value
 * @param size         of buffer in bytes; must be greater than the value's length
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not greater than the value's length; the buffer stays as it was
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetServerDate(char* buffer, int32_t size);

/** The container of the computer in the console. A missing value is the empty text, and a success.
 *
 * @param[out] buffer  receives the value
 * @param size         of buffer in bytes; must be greater than the value's length
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not greater than the value's length; the buffer stays as it was
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetContainer(char* buffer, int32_t size);

/** The parameter text of the last installation error. A missing value is the empty text, and a success.
 *
 * @param[out] buffer  receives the value
 * @param size         of buffer in bytes; must be greater than the value's length
 * @retval KE_MISSING_ARGUMENT     buffer is null, or size is not positive
 * @retval KE_BUFFER_TOO_SMALL     size is not greater than the value's length; the buffer stays as it was
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetLastErrorParam(char* buffer, int32_t size);

/** The state of the installation. The stored text is read as a decimal number up to its first character that is no
 * digit, 0 when there is none. 200 and more is a complete installation.
 *
 * @param[out] value  receives the state; stays as it was when the store cannot be read
 * @retval KE_MISSING_ARGUMENT     value is null
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetInstallState(int32_t* value);

/** The last installation error, read as a number like the state of KE_GetInstallState().
 *
 * @param[out] value  receives the error, 0 when there is none; stays as it was when the store cannot be read
 * @retval KE_MISSING_ARGUMENT     value is null
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetLastInstallError(int32_t* value);

/** Whether the installation is complete: its state is 200 or more.
 *
 * @param[out] value  receives 1 or 0; set to 0 before anything is read
 * @retval KE_MISSING_ARGUMENT     value is null
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_IsInstallComplete(int32_t* value);

/** Whether the computer is integrated into the console: the store holds both an integration date and a device
 * identifier.
 *
 * @param[out] value  receives 1 or 0; stays as it was when the store cannot be read
 * @retval KE_MISSING_ARGUMENT     value is null
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_IsIntegrated(int32_t* value);

/** Stores the identifier of the agent.
 *
 * @param text  the value, not empty
 * @retval KE_MISSING_ARGUMENT     text is null or empty; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetAgentID(const char* text);

/** Stores the version of the agent.
 *
 * @param text  the value, not empty
 * @retval KE_MISSING_ARGUMENT     text is null or empty; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetAgentVersion(const char* text);

/** Stores the date of the server, in any form.
 *
 * @param text  the value, not empty
 * @retval KE_MISSING_ARGUMENT     text is null or empty; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetServerDate(const char* text);

/** Stores the container of the computer.
 *
 * @param text  the value, not empty
 * @retval KE_MISSING_ARGUMENT     text is null or empty; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetContainer(const char* text);

/** Stores a value under any key of the section INTEGRATION; a new key is appended. A key that is to survive the file
 * has no "=", no "[" at its beginning and no line break.
 *
 * @param key   the key, not empty; letter case does not matter
 * @param text  the value, not empty
 * @retval KE_MISSING_ARGUMENT     key or text is null or empty; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetPropertyInIntegra(const char* key, const char* text);

/** Stores the identifier of the customer.
 *
 * @param text  the value, which may be empty
 * @retval KE_MISSING_ARGUMENT     text is null; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetCustomerId(const char* text);

/** Stores the identifier of the device, and then tells it to the installer plug-in and to the remote-control plug-in.
 * What these answer is traced and is not the result.
 *
 * @param text  the value, which may be empty
 * @retval KE_MISSING_ARGUMENT     text is null; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetDeviceID(const char* text);

/** Stores the certificate of the agent.
 *
 * @param text  the value, which may be empty
 * @retval KE_MISSING_ARGUMENT     text is null; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetCertificate(const char* text);

/** Stores the user of the remote control, and then tells it to the remote-control plug-in. What this answers is traced
 * and is not the result.
 *
 * @param text  the value, which may be empty
 * @retval KE_MISSING_ARGUMENT     text is null; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetUserRCM(const char* text);

/** Stores the password of the remote control, and then tells it to the remote-control plug-in. What this answers is
 * traced and is not the result.
 *
 * @param text  the value as it is to be stored, which may be empty: by convention a setting text of KE_EncryptSetting()
 * @retval KE_MISSING_ARGUMENT     text is null; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetPasswordRCM(const char* text);

/** Stores the parameter text of the last installation error.
 *
 * @param text  the value; null and empty store the empty text
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetLastErrorParam(const char* text);

/** Stores the last installation error, in decimal.
 *
 * @param error  the error, read during the call
 * @retval KE_MISSING_ARGUMENT     error is null; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetLastInstallError(const int32_t* error);

/** Stores the state of the installation, in decimal.
 *
 * @param state        the state, read during the call
 * @param onlyForward  other than 0: a state that is not greater than the stored one is left alone, which is a success
 * @retval KE_MISSING_ARGUMENT     state is null; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetInstallState(const int32_t* state, int32_t onlyForward);

/** @} */

/** @defgroup ke_integration Integration
 *
 * Whether the computer belongs to the console. These exports read the store first, as the store accessors do.
 * @{ */

/** Stores the integration date, as "2024-03-05 07:08:09". The fields are not checked; a text of more than 39 characters
 * is cut there. With a device identifier, the computer is then integrated.
 *
 * @param time  the date and time, read during the call
 * @retval KE_MISSING_ARGUMENT     time is null; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_Integrate(const KE_TIME* time);

/** Empties the integration date and the device identifier; the entries stay. Without them it writes nothing. A single
 * write that fails is a success.
 *
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or neither
 *                                 change could be written
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_DeIntegrate(void);

/** @} */

/** @defgroup ke_settings Enciphered settings
 *
 * A setting text is the base64 form of a setting enciphered by ApiCr.dll, which is loaded from the DLL's directory:
 * lines of 76 characters parted by CR LF. It may be stored as a password of the store, on one line too.
 * @{ */

/** Makes the setting text of a text. Called with a null output it tells the size that is needed:
 * @code{.c}
 * int32_t size = 0;
 * if (KE_EncryptSetting(text, length, NULL, &size) == KE_BUFFER_TOO_SMALL) {
 *   char* output = malloc(size + 1);
 *   if (output && KE_EncryptSetting(text, length, output, &size) == KE_SUCCESS) output[size] = '\0';
 *   // ...
 *   free(output);
 * }
 * @endcode
 *
 * 354 characters are enough for any setting: a caller with such a buffer needs no first call.
 *
 * A setting may have 253 characters, and 254 bytes in UTF-8. A longer one, and a negative textLength, is enciphered as
 * the empty setting, with KE_SUCCESS.
 *
 * @param text                in the system's code page
 * @param textLength          how many characters of text to take at most; all of a shorter text
 * @param[out] output         receives the setting text without a terminating zero; null asks for the size
 * @param[in,out] outputSize  on entry the size of output in characters; receives the length of the setting text, or
 *                            with a null output the size that is needed, a little more than that length
 * @return KE_SUCCESS or one of the codes below; any other value is the error of the crypto module, as it stands
 * @retval KE_MISSING_ARGUMENT   text or outputSize is null
 * @retval KE_BUFFER_TOO_SMALL   output is null: *outputSize is the size that is needed. Or *outputSize is smaller than
 *                               that: nothing was written, and *outputSize stays as it was
 * @retval KE_EXCEPTION          an unexpected failure, such as memory that ran out
 * @retval KE_CRYPTO_NOT_LOADED  ApiCr.dll could not be loaded from the DLL's directory (found before null arguments
 *                               are)
 */
KE_RESULT KE_API KE_EncryptSetting(const char* text, int32_t textLength, char* output, int32_t* outputSize);

/** Replaces a setting text by the plain setting, which is in UTF-8. Characters that are not base64 are skipped.
 * @code{.c}
 * char buffer[512]; // larger than any setting text, so always large enough
 * strcpy(buffer, settingText);
 * if (KE_DecryptSetting(buffer, sizeof buffer) == KE_SUCCESS) use(buffer);
 * @endcode
 *
 * @param[in,out] buffer  on entry the setting text, ending in a zero; receives the plain setting
 * @param size            of buffer in bytes; must exceed the length of the enciphered block by more than 1, however
 *                        short the setting is. The length of the setting text always does, unless it is empty: then 2
 * @return KE_SUCCESS or one of the codes below; any other value is the error of the crypto module, as it stands; the
 *         buffer stays as it was
 * @retval KE_MISSING_ARGUMENT   buffer is null
 * @retval KE_BUFFER_TOO_SMALL   size is too small; the buffer stays as it was
 * @retval KE_NOT_CREATED        no memory for the deciphered setting
 * @retval KE_EXCEPTION          an unexpected failure, such as memory that ran out
 * @retval KE_CRYPTO_NOT_LOADED  ApiCr.dll could not be loaded from the DLL's directory (found before a null buffer is)
 */
KE_RESULT KE_API KE_DecryptSetting(char* buffer, int32_t size);

/** The password of the remote control, deciphered, in UTF-8. A text that cannot be deciphered is not told: the buffer
 * then holds what its base64 form stands for.
 *
 * @param[out] buffer  receives the password; the empty text when it is missing
 * @param size         of buffer in bytes; must exceed the length of the enciphered block by more than 1, as for
 *                     KE_DecryptSetting()
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not positive or too small; the buffer stays as it was
 * @retval KE_NOT_CREATED          no memory for the deciphered password
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or the
 *                                 password is missing or empty
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetPasswordRCMDec(char* buffer, int32_t size);

/** @} */

/** @defgroup ke_files Enciphered value files
 *
 * An INI file that is enciphered as a whole, with ApiCr.dll from the folder Common of the product's install path. Plain
 * INI files are read too. A missing file is created empty. Paths are full ones; a relative path is one of the current
 * directory.
 *
 * Threads: calls for different files may run at the same time. The caller keeps other writers, and other threads that
 * call KE_SetEncryptedFileValue(), away from the same file.
 * @{ */

/** One value of an enciphered file.
 *
 * @param section      name of the section, cut at 255 characters; letter case does not matter
 * @param key          name of the key, cut at 255 characters; letter case does not matter
 * @param[out] buffer  receives the value; stays as it was after any failure
 * @param size         of buffer in bytes; must be greater than the value's length
 * @param filePath     the file
 * @retval KE_MISSING_ARGUMENT  section, key, buffer or filePath is null, or filePath is empty
 * @retval KE_BUFFER_TOO_SMALL  size is not positive, or not greater than the value's length
 * @retval KE_NOT_CREATED       no memory
 * @retval KE_EXCEPTION         an unexpected failure, such as memory that ran out
 * @retval KE_STORE_UNUSABLE    the value is missing or empty
 * @retval KE_CRYPTO_FAILED     the file could not be opened, created, read or deciphered, or is marked as enciphered
 *                              and ApiCr.dll could not be loaded
 */
KE_RESULT KE_API KE_GetEncryptedFileValue(const char* section, const char* key, char* buffer, int32_t size,
                                          const char* filePath);

/** Sets one value of an enciphered file, adding section and key when they are new, and replaces the file in one step.
 * Without ApiCr.dll the file is written plain, which is a success. So is a full disk, which leaves the file as it was.
 *
 * @param section   name of the section, cut at 255 characters; letter case does not matter
 * @param key       name of the key, cut at 255 characters; letter case does not matter
 * @param value     the value, which may be empty. Line breaks in it are left out
 * @param filePath  the file
 * @retval KE_MISSING_ARGUMENT  section, key, value or filePath is null, or filePath is empty; nothing was touched
 * @retval KE_NOT_CREATED       no memory
 * @retval KE_EXCEPTION         an unexpected failure, such as memory that ran out
 * @retval KE_CRYPTO_FAILED     the file could not be opened, created, read or deciphered, or is marked as enciphered
 *                              and ApiCr.dll could not be loaded: it stays as it was. Or it could not be opened for
 *                              writing. Or it could not be enciphered: its text was then written plain
 */
KE_RESULT KE_API KE_SetEncryptedFileValue(const char* section, const char* key, const char* value,
                                          const char* filePath);

/** @} */

/** @defgroup ke_password Uninstall password
 *
 * Stored as the text that was given, by convention a setting text. All read the store first, as the store accessors do.
 * @{ */

/** Stores the uninstall password; the empty text removes it.
 *
 * @param text      the value as it is to be stored: by convention a setting text of KE_EncryptSetting()
 * @param reserved  not used
 * @retval KE_MISSING_ARGUMENT     text is null; nothing was touched
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 */
KE_RESULT KE_API KE_SetUninstallPass(const char* text, uint32_t reserved);

/** The uninstall password, deciphered, in UTF-8. A text that cannot be deciphered is not told, as by
 * KE_GetPasswordRCMDec().
 *
 * @param[out] buffer  receives the password; stays as it was after any failure
 * @param size         of buffer in bytes; must exceed the length of the enciphered block by more than 1, as for
 *                     KE_DecryptSetting()
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is too small
 * @retval KE_NOT_CREATED          no memory for the deciphered password
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or the
 *                                 password is missing or empty
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetUninstallPass(char* buffer, int32_t size);

/** The uninstall password as it is stored.
 *
 * @param[out] buffer  receives the text; stays as it was after any failure
 * @param size         of buffer in bytes; must be greater than the text's length
 * @retval KE_MISSING_ARGUMENT     buffer is null
 * @retval KE_BUFFER_TOO_SMALL     size is not greater than the text's length
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or the
 *                                 password is missing or empty
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_GetUninstallPassEx(char* buffer, int32_t size);

/** Whether a password is the uninstall password, byte for byte. The answer is no result code: every failure, such as a
 * store that cannot be read, is a 0. Passwords of more than 2047 characters never match.
 *
 * @param password  the password in question; null and empty never match
 * @param stored    0: compared with the deciphered password, which is in UTF-8. Else: compared with the stored text
 * @return 1 when it is the password; else 0, also when no password is configured
 */
int32_t KE_API KE_CheckInstallationPassw(const char* password, int32_t stored);

/** Whether an uninstall password is configured. The answer is no result code.
 *
 * @return 1 when there is one; else 0, also when the store cannot be read, and when the stored text has more than 2047
 *         characters
 */
int32_t KE_API KE_IsNeededInstallationPassw(void);

/** @} */

/** @defgroup ke_launcher Launcher operations
 *
 * Work that is handed to the launcher module (KELMNAPI.dll, in the folder Common beside the DLL's own), to plug-ins and
 * to the installer helper; and the files of settings that belong to it.
 *
 * Threads: the launcher is bound once per process, without a lock. Callers keep KE_SendReport(), KE_AplyLocalRCMCfg(),
 * KE_UpdateNow(), KE_UpdateNowEx(), KE_InitEventSystem() and KE_RemovePlugin() for the host KELUpd from running at the
 * same time in one process.
 * @{ */

/** Has the launcher send the report, by the command "KELREPORT -R -force". Failures are traced only. The launcher is
 * also looked for in the DLL's own directory.
 *
 * @retval KE_SUCCESS    always, but for an exception
 * @retval KE_EXCEPTION  an unexpected failure, such as memory that ran out
 */
KE_RESULT KE_API KE_SendReport(void);

/** Has the launcher apply the local remote-control configuration, by the command "KELCONF -LocalCfg -force". Failures
 * are traced only.
 *
 * @retval KE_SUCCESS    always, but for an exception
 * @retval KE_EXCEPTION  an unexpected failure, such as memory that ran out
 */
KE_RESULT KE_API KE_AplyLocalRCMCfg(void);

/** Has the launcher update the agent now. After a first update that ended well, it is told to continue every 20
 * seconds, for as long as it answers that there is more to do (exit code 1559). The call blocks meanwhile, and nothing
 * bounds the repetitions.
 *
 * @return KE_SUCCESS or one of the codes below; any other value is what the launcher returned to the first call, 0 for
 *         a success. The exit codes, and what the repetitions came to, do not count
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_LAUNCHER_NOT_LOADED  the launcher could not be loaded, or lacks a function; or another thread has freed it
 *                                 before the update was done
 */
KE_RESULT KE_API KE_UpdateNow(void);

/** Has the launcher update the agent now, as KE_UpdateNow() does; the result tells how the update ended.
 *
 * @param first   handed to the launcher as it is
 * @param second  handed to the launcher as it is
 * @return KE_SUCCESS or one of the codes below; any other value is the exit code that ended the update, as it stands.
 *         When the first call failed without a positive exit code: what the launcher returned
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_LAUNCHER_NOT_LOADED  the launcher could not be loaded, or lacks a function; or another thread has freed it
 *                                 before the update was done
 * @retval KE_UPDATE_FAILED_1566   the update ended with exit code 1566
 * @retval KE_UPDATE_FAILED_1558   the update ended with exit code 1558
 * @retval KE_UPDATE_FAILED_1565   the update ended with exit code 1565
 * @retval KE_UPDATE_FAILED_5000   the update ended with exit code 5000
 * @retval KE_UPDATE_FAILED_1567   the update ended with exit code 1567
 */
KE_RESULT KE_API KE_UpdateNowEx(uint32_t first, uint32_t second);

/** A value of the update settings, UPDNW.DAT in the folder KesLpmng, as GetPrivateProfileString reads it.
 *
 * @param section      name of the section; null lists the sections
 * @param key          name of the key; null lists the keys
 * @param def          what is read when the value is missing
 * @param[out] buffer  receives the value, cut when it does not fit; null reads nothing
 * @param bufferSize   size of buffer in bytes, of which at most 1 MiB is used; 0 reads nothing
 * @retval KE_SUCCESS    always, but for an exception: also when nothing was read
 * @retval KE_EXCEPTION  an unexpected failure, such as memory that ran out
 */
KE_RESULT KE_API KE_GetUpdateNowConfig(const char* section, const char* key, const char* def, char* buffer,
                                       uint32_t bufferSize);

/** Sets a value of the update settings, UPDNW.DAT in the folder KesLpmng, as WritePrivateProfileString does.
 *
 * @param section       name of the section; null writes nothing
 * @param key           name of the key; null removes the section
 * @param value         the value; null removes the key
 * @param onlyIfExists  other than 0: a missing file is not created
 * @retval KE_SUCCESS    always, but for an exception: also when nothing could be written
 * @retval KE_EXCEPTION  an unexpected failure, such as memory that ran out
 */
KE_RESULT KE_API KE_SetUpdateNowConfig(const char* section, const char* key, const char* value, uint32_t onlyIfExists);

/** Whether the agent may be installed beside other products: stored in decimal in KelUpg.ini, in the folder KelUpg, as
 * NoCheckAV of the section GENERAL and as InstallWithOtherProducts of the section KEC. A failed write is not told.
 *
 * @param value  any number
 * @retval KE_NOT_CREATED  the directory of KELUtils.dll is unknown
 * @retval KE_EXCEPTION    an unexpected failure, such as memory that ran out
 */
KE_RESULT KE_API KE_SetNoCheckAVValue(int32_t value);

/** Tells the stored device identifier, of up to 37 characters, to plug-ins. Each plug-in is loaded for the call from
 * the path in its host's INI file: key RCM of Kelconf.ini for the remote control, key KEC of KelUpg.ini for the
 * installer, both in the section PLUGINS.
 *
 * @param target  0: both plug-ins, the installer plug-in first; 1: the installer plug-in; 2: the remote-control plug-in
 * @return KE_SUCCESS or one of the codes below; any other value is what the plug-in returned. Of two failures the
 *         installer plug-in's counts
 * @retval KE_MISSING_ARGUMENT           target is none of these. A negative one is found before the store is read
 * @retval KE_BUFFER_TOO_SMALL           the device identifier has 38 characters or more
 * @retval KE_EXCEPTION                  an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY        the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE             the store can be neither opened, read nor created, or cannot be repaired; or
 *                                       there is no device identifier
 * @retval KE_CRYPTO_NOT_LOADED          the store is enciphered, and ApiCr.dll could not be loaded from the DLL's
 *                                       directory
 * @retval KE_CRYPTO_FAILED              the store could not be deciphered
 * @retval KE_INSTALLER_PLUGIN_UNUSABLE  the installer plug-in has no full path in its host's file, or cannot be loaded
 *                                       or initialised, or lacks a function
 * @retval KE_MODULE_NOT_LOADED          the same for the remote-control plug-in
 */
KE_RESULT KE_API KE_NotifyDeviceID(int32_t target);

/** Starts the installer helper, KepWInst.exe with the argument -FORCE, from the folder KepWInst beside the DLL's own
 * folder, else from the DLL's directory. Does not wait for it.
 *
 * @retval KE_EXCEPTION                   an unexpected failure, such as memory that ran out
 * @retval KE_INSTALL_HELPER_NOT_STARTED  it could not be started from either place, or the directory of KELUtils.dll is
 *                                        unknown
 */
KE_RESULT KE_API KE_LaunchKEPWInst(void);

/** @} */

/** @defgroup ke_scheduling Scheduling
 *
 * Jobs are kept by the scheduler, the program zumat in the folder Scheduler beside the DLL's own folder, or in the
 * DLL's own. Each export runs it with one or more command lines, of at most 8198 characters each (a longer one is cut),
 * and waits for it: up to 90 seconds per command. Nothing is repeated, and nothing undone. docs/command-language.md
 * describes the command lines.
 *
 * A job names the program that the scheduler starts, such as "KEPLPMNG" for the plug-in manager, the module that runs
 * under it and the module's arguments; null texts are empty. Its task ID, a positive number, names it for later
 * changes. No text may contain a double quote: nothing is escaped.
 *
 * A periodic job is added and then edited with the same clauses, so that it is there whether or not its task ID was.
 * Only the result of the edit counts.
 *
 * Threads: nothing is locked. Calls at the same time start schedulers at the same time, which take turns by themselves.
 * @{ */

/** A job at a fixed day and time. It is added, never edited.
 *
 * @param program    that the scheduler starts
 * @param module     that runs under the program, not empty
 * @param arguments  of the module
 * @param taskId     of the job, from 1
 * @param startDay   in the scheduler's own notation; not checked
 * @param startTime  in the scheduler's own notation; not checked
 * @retval KE_MISSING_ARGUMENT       module is null or empty
 * @retval KE_EXCEPTION              an unexpected failure, such as memory that ran out
 * @retval KE_SCHEDULER_NOT_STARTED  the scheduler is missing or no program, or the directory of KELUtils.dll is unknown
 * @retval KE_SCHEDULER_FAILED       the scheduler ended with an exit code other than 0
 * @retval KE_SCHEDULER_TIMEOUT      the scheduler did not end in 90 seconds, and was left running
 * @retval KE_OUT_OF_RANGE           startDay or startTime is null, or taskId is below 1
 */
KE_RESULT KE_API KE_SetTask(const char* program, const char* module, const char* arguments, int32_t taskId,
                            const char* startDay, const char* startTime);

/** A periodic job, created or redefined. The scheduler draws its first start of a day: from the minute taskId mod 15
 * after midnight to one period later, but at least to 00:29 and at most to 23:59. Then the boot jobs of the module are
 * activated, whatever comes of that.
 *
 * @param program        that the scheduler starts
 * @param module         that runs under the program
 * @param arguments      of the module
 * @param taskId         of the job, from 1
 * @param periodMinutes  in minutes, from 1. A week or more is cut to whole weeks, a day or more to whole days
 * @param randomWeekday  of a period below a day. 0: it runs on all days; else on one from Monday to Friday that is
 *                       drawn
 * @retval KE_MISSING_ARGUMENT       module is null or empty; the job is written all the same
 * @retval KE_EXCEPTION              an unexpected failure, such as memory that ran out
 * @retval KE_SCHEDULER_NOT_STARTED  the scheduler is missing or no program, or the directory of KELUtils.dll is unknown
 * @retval KE_SCHEDULER_FAILED       the scheduler ended with an exit code other than 0
 * @retval KE_SCHEDULER_TIMEOUT      the scheduler did not end in 90 seconds, and was left running
 * @retval KE_OUT_OF_RANGE           periodMinutes or taskId is below 1
 */
KE_RESULT KE_API KE_SetPeriodicTask(const char* program, const char* module, const char* arguments, int32_t taskId,
                                    int32_t periodMinutes, int32_t randomWeekday);

/** A periodic job of the plug-in manager that starts within a window of the day. Then the boot jobs of the module are
 * deactivated; of two failures that of the job counts.
 *
 * @param module         that runs under the plug-in manager, not empty
 * @param arguments      of the module
 * @param taskId         of the job, from 1
 * @param periodMinutes  in minutes, as for KE_SetPeriodicTask()
 * @param startMinute    beginning of the window, in minutes since midnight; brought between 29 and 1439
 * @param endMinute      end of the window, in minutes since midnight, not before startMinute; brought between 29 and
 *                       1439
 * @param randomWeekday  as for KE_SetPeriodicTask()
 * @retval KE_MISSING_ARGUMENT       module is null or empty
 * @retval KE_EXCEPTION              an unexpected failure, such as memory that ran out
 * @retval KE_SCHEDULER_NOT_STARTED  the scheduler is missing or no program, or the directory of KELUtils.dll is unknown
 * @retval KE_SCHEDULER_FAILED       the scheduler ended with an exit code other than 0
 * @retval KE_SCHEDULER_TIMEOUT      the scheduler did not end in 90 seconds, and was left running
 * @retval KE_OUT_OF_RANGE           periodMinutes or taskId is below 1, a minute is negative, or endMinute is before
 *                                   startMinute
 */
KE_RESULT KE_API KE_SetPeriodicTaskEx(const char* module, const char* arguments, int32_t taskId, int32_t periodMinutes,
                                      int32_t startMinute, int32_t endMinute, int32_t randomWeekday);

/** A periodic job of the plug-in manager with a recurrence in the scheduler's own notation. Then the boot jobs of the
 * module are deactivated; of two failures that of the job counts.
 *
 * @param module         that runs under the plug-in manager, not empty
 * @param arguments      of the module
 * @param taskId         of the job, from 1
 * @param periodMinutes  only checked: from 1
 * @param startMinute    as for KE_SetPeriodicTaskEx(); with 0 the window is left out
 * @param endMinute      as for KE_SetPeriodicTaskEx(); with 0 the window is left out
 * @param periodicData   the recurrence, such as "-Every:Days:2"; goes to the scheduler as it is
 * @retval KE_MISSING_ARGUMENT       module is null or empty
 * @retval KE_EXCEPTION              an unexpected failure, such as memory that ran out
 * @retval KE_SCHEDULER_NOT_STARTED  the scheduler is missing or no program, or the directory of KELUtils.dll is unknown
 * @retval KE_SCHEDULER_FAILED       the scheduler ended with an exit code other than 0
 * @retval KE_SCHEDULER_TIMEOUT      the scheduler did not end in 90 seconds, and was left running
 * @retval KE_OUT_OF_RANGE           periodMinutes or taskId is below 1, a minute is negative, or endMinute is before
 *                                   startMinute
 */
KE_RESULT KE_API KE_SetPeriodicTaskRangeDate(const char* module, const char* arguments, int32_t taskId,
                                             int32_t periodMinutes, int32_t startMinute, int32_t endMinute,
                                             const char* periodicData);

/** Has the plug-in manager run a command once, after the next boot.
 *
 * @param command       of the plug-in manager: a module with its arguments, not empty
 * @param delaySeconds  after the boot, in seconds, from 0
 * @param[out] result   set to 0, and means nothing
 * @retval KE_EXCEPTION              an unexpected failure, such as memory that ran out
 * @retval KE_SCHEDULER_NOT_STARTED  any failure of the scheduler
 * @retval KE_OUT_OF_RANGE           command is null or empty, delaySeconds is negative, or result is null; *result
 *                                   stays as it was
 */
KE_RESULT KE_API KE_ScheduleTaskReboot(const char* command, int32_t delaySeconds, uint32_t* result);

/** Does nothing.
 *
 * @param unused  not used
 * @retval KE_SUCCESS  always
 */
KE_RESULT KE_API KE_RemoveScheduleTaskReboot(uint32_t unused);

/** Schedules all jobs of the agent, other ones for a computer that is integrated than for one that is not, and starts
 * the installer helper. 21 commands, or 23 on an integrated computer, of up to 90 seconds each. Every job is tried; the
 * last failure counts, and that of the installer helper before all.
 *
 * @retval KE_EXCEPTION                   an unexpected failure, such as memory that ran out
 * @retval KE_SCHEDULER_NOT_STARTED       the scheduler is missing or no program, or the directory of KELUtils.dll is
 *                                        unknown
 * @retval KE_SCHEDULER_FAILED            the scheduler ended with an exit code other than 0
 * @retval KE_SCHEDULER_TIMEOUT           the scheduler did not end in 90 seconds, and was left running
 * @retval KE_INSTALL_HELPER_NOT_STARTED  the installer helper could not be started
 */
KE_RESULT KE_API KE_ScheduleDefaultTasks(void);

/** Completes an upgrade: on a computer that is not integrated runs the integration test and waits for it, up to three
 * minutes; schedules the jobs anew; stores the version; has the plug-in manager do the rest, as
 * KE_ScheduleUpgradeComplete() does; copies INTEGRA.DAT over INTEGRA.START when it can be read and has at least four
 * sections, else leaves the start copy as it is. Failures of the scheduler and of the copy are traced only.
 *
 * @param resultCode  of the platform's installer: the version is stored for 0 and 3010
 * @param version     of the agent, not empty where it is stored
 * @retval KE_MISSING_ARGUMENT     the version was to be stored, and is null or empty
 * @retval KE_NOT_CREATED          the entry could not be created
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired; or it
 *                                 cannot be written: the cached value is then the new one until the store is read again
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered; or it could not be enciphered, and was written
 *                                 plain
 * @retval KE_PROGRAM_NOT_STARTED  the plug-in manager could not be started
 */
KE_RESULT KE_API KE_UpgradeComplete(uint32_t resultCode, const char* version);

/** Has the plug-in manager complete the upgrade, by its module KELUpg, and does not wait for it.
 *
 * @param resultCode  of the platform's installer, handed on in decimal
 * @param version     of the agent, handed on; the arguments together are cut at 1023 characters
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_PROGRAM_NOT_STARTED  the plug-in manager could not be started
 */
KE_RESULT KE_API KE_ScheduleUpgradeComplete(int32_t resultCode, const char* version);

/** @} */

/** @defgroup ke_proxy Proxy
 *
 * How the agent reaches its server. The settings are records of the agent module KELAGAPI.dll, which is loaded from the
 * folder Common, else from the DLL's own directory, and freed again. A proxy's user and password are the bytes of the
 * record, which KE_SetAgentProxyInfo() stores in UTF-8.
 * @{ */

/** The proxy in use; when there is none, the stored one. Host and port are filled only from an address with a ":": the
 * host is what stands before the first one, the port the decimal number behind it, 0 when there is none. Nothing stored
 * is a success too: the proxy is then cleared.
 *
 * @param[out] proxy  receives the proxy. Cleared when a record cannot be read; stays as it was when the module cannot
 *                    be used
 * @retval KE_MISSING_ARGUMENT   proxy is null
 * @retval KE_EXCEPTION          an unexpected failure, such as memory that ran out
 * @retval KE_AGENT_NOT_LOADED   the agent module could not be loaded
 * @retval KE_AGENT_INCOMPLETE   the agent module lacks a function
 * @retval KE_AGENT_READ_FAILED  a record could not be read
 */
KE_RESULT KE_API KE_GetConfiguratedProxy(KE_PROXY* proxy);

/** Stores the proxy of the agent and puts it in use. The arguments are traced as they are given.
 *
 * @param server    its host, not empty; with the port cut at 255 characters
 * @param port      in decimal; empty means 80
 * @param user      a setting text of KE_EncryptSetting(), at most 1023 characters; the deciphered text is cut at 127
 *                  bytes. Empty: neither user nor password is stored
 * @param password  a setting text in the same way; empty: it is not stored
 * @return KE_SUCCESS or one of the codes below; any other value is the error of the crypto module. Nothing was stored
 *         after any failure
 * @retval KE_MISSING_ARGUMENT     server, port, user or password is null, or server is empty
 * @retval KE_NOT_CREATED          no memory for the deciphered user or password
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_CRYPTO_NOT_LOADED    user or password is to be deciphered, and ApiCr.dll could not be loaded from the
 *                                 DLL's directory
 * @retval KE_OUT_OF_RANGE         user or password has more than 1023 characters
 * @retval KE_AGENT_NOT_LOADED     the agent module could not be loaded
 * @retval KE_AGENT_INCOMPLETE     the agent module lacks a function
 * @retval KE_REGISTRY_UNUSABLE    the agent module could not store the record
 */
KE_RESULT KE_API KE_SetAgentProxyInfo(const char* server, const char* port, const char* user, const char* password);

/** Stores the static proxy. Without a host and addresses it is switched off.
 *
 * @param host  a host name, cut at 255 characters; may be null or empty
 * @param ips   a list of addresses, cut at 319 characters; may be null or empty
 * @retval KE_EXCEPTION           an unexpected failure, such as memory that ran out
 * @retval KE_AGENT_NOT_LOADED    the agent module could not be loaded
 * @retval KE_AGENT_INCOMPLETE    the agent module lacks a function
 * @retval KE_AGENT_WRITE_FAILED  the agent module could not store the record
 */
KE_RESULT KE_API KE_SetStaticProxyInfo(const char* host, const char* ips);

/** The proxy to use on the internet. The installer plug-in is asked first, with proxy and size as they are, and its
 * answer is the result. Its path is in KelUpg.ini, section PLUGINS, key KEC, and begins with a drive or a share. A
 * plug-in with any other path, such as a relative one, is not usable. When the plug-in is not usable, or answers
 * KE_INSTALLER_PLUGIN_UNUSABLE, the agent module is asked: the host is then the address up to its first ":", the port
 * the number behind that, 80 when it is missing or 0.
 * @code{.c}
 * KE_PROXY proxy;
 * memset(&proxy, 0, sizeof proxy);
 * if (KE_GetInetConfig(&proxy, sizeof proxy) == KE_SUCCESS && proxy.host[0] != '\0') connect_through(&proxy);
 * @endcode
 *
 * @param[out] proxy  receives the proxy; an empty host stands for none. Stays as it was after any failure of the agent
 *                    module
 * @param size        of proxy in bytes: sizeof(KE_PROXY)
 * @return KE_SUCCESS or one of the codes below; any other value is what the plug-in returned
 * @retval KE_MISSING_ARGUMENT   proxy is null
 * @retval KE_BUFFER_TOO_SMALL   without a usable plug-in: size does not cover all fields of a KE_PROXY, 773 bytes
 * @retval KE_NOT_CREATED        the agent module could not find out the proxy
 * @retval KE_EXCEPTION          an unexpected failure, such as memory that ran out
 * @retval KE_AGENT_NOT_LOADED   the agent module could not be loaded
 * @retval KE_AGENT_INCOMPLETE   the agent module lacks a function
 * @retval KE_AGENT_READ_FAILED  the agent module could not hand out the proxy
 */
KE_RESULT KE_API KE_GetInetConfig(KE_PROXY* proxy, uint32_t size);

/** @} */

/** @defgroup ke_registration Registration
 *
 * What the agent's programs find each other by: INI files of the modules that host plug-ins, and the token files of the
 * plug-in manager, the scheduler and the watchdog. Nothing is cached: every call edits the files, and what it did
 * before it failed stays. Keys, values and types go to the platform's profile functions as they are given. The exports
 * for plug-ins, versions and subscriptions work on folders beside the DLL's own.
 *
 * Threads: the platform's profile functions take turns on a file. KE_InitializeSystem() and KE_InitializeSystemEx()
 * must not run in two threads at once.
 * @{ */

/** Writes all registration files of an installation: the token files, then the standard plug-ins of the configuration,
 * update and upgrade module. Creates the folders for them, but not root. Before that, whatever root is, every
 * protection plug-in in the registry is asked to register itself anew. Stops at the first file that fails. Repeating it
 * leaves the same files.
 *
 * @param root  the installation's folder, a full path; one trailing backslash does not count
 * @retval KE_MISSING_ARGUMENT  root is null, empty or a lone backslash
 * @retval KE_EXCEPTION         an unexpected failure, such as memory that ran out
 * @retval KE_STORE_UNUSABLE    a token file could not be opened, or a value of an INI file not be written
 */
KE_RESULT KE_API KE_InitializeSystem(const char* root);

/** The same as KE_InitializeSystem() for an installation that ends with a reboot: the upgrade module's file, beside the
 * DLL's own folder, first receives the text rebootRequired as REBOOT_REQUIRED. Whether it could be written does not
 * count.
 *
 * @param root            as for KE_InitializeSystem()
 * @param rebootRequired  "TRUE" in any letter case; any other text, and null, writes nothing
 * @retval KE_MISSING_ARGUMENT  root is null, empty or a lone backslash; rebootRequired was written all the same
 * @retval KE_EXCEPTION         an unexpected failure, such as memory that ran out
 * @retval KE_STORE_UNUSABLE    a token file could not be opened, or a value of an INI file not be written
 */
KE_RESULT KE_API KE_InitializeSystemEx(const char* root, const char* rebootRequired);

/** Enters a plug-in into the file of the module that hosts it: HOST.ini in the folder HOST, section PLUGINS.
 *
 * @param key    of the plug-in, not empty
 * @param host   the hosting module, not empty
 * @param value  by convention the plug-in's path in double quotes; null takes the key out
 * @retval KE_MISSING_ARGUMENT     key or host is null or empty
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the platform reports that a write or a removal failed, as it does for a missing
 *                                 folder
 */
KE_RESULT KE_API KE_AddPlugin(const char* key, const char* host, const char* value);

/** Takes a plug-in out of its host's file. For the host KELUpg, in any letter case, the file then says that the
 * component is not installed. For the host KELUpd, in any letter case, the launcher KELMNAPI.dll, from the folder
 * Common, then runs the command "KELUPD -REMOVEINFO:" with the key; the plug-in stays removed when that fails.
 *
 * Threads: for KELUpd, see the launcher operations.
 *
 * @param key   of the plug-in, not empty
 * @param host  the hosting module, not empty
 * @retval KE_MISSING_ARGUMENT     key or host is null or empty
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the platform reports that a write or a removal failed, as it does for a missing
 *                                 folder; or for KELUpd the command ended with another exit code than 0
 * @retval KE_PROGRAM_NOT_STARTED  for KELUpd: the launcher could not run the command
 * @retval KE_LAUNCHER_NOT_LOADED  for KELUpd: the launcher could not be loaded, or lacks a function
 */
KE_RESULT KE_API KE_RemovePlugin(const char* key, const char* host);

/** Records the installed version of a component in the upgrade module's file. For the component KEAGENT, in any letter
 * case, the action of the upgrade module runs afterwards; its result does not count.
 *
 * @param key      of the component, not empty
 * @param version  any text, not empty
 * @retval KE_MISSING_ARGUMENT     key or version is null or empty
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the platform reports that a write or a removal failed, as it does for a missing
 *                                 folder
 */
KE_RESULT KE_API KE_SetVersion(const char* key, const char* version);

/** Subscribes a plug-in to a policy type, in the configuration module's file. The console's plug-in, KEC in just these
 * letters, displaces the configuration module's own, KELSYSCF.
 *
 * @param key   of the plug-in, not empty
 * @param type  of the policies, such as "101", not empty
 * @retval KE_MISSING_ARGUMENT     key or type is null or empty
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the platform reports that a write or a removal failed, as it does for a missing
 *                                 folder
 */
KE_RESULT KE_API KE_AddPolicyTypeSuscription(const char* key, const char* type);

/** Withdraws the subscription of a plug-in to a policy type. The console's plug-in, KEC in just these letters, hands
 * the type back to the configuration module's own, KELSYSCF.
 *
 * @param key   of the plug-in, not empty
 * @param type  of the policies, such as "101", not empty
 * @retval KE_MISSING_ARGUMENT     key or type is null or empty
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the platform reports that a write or a removal failed, as it does for a missing
 *                                 folder
 */
KE_RESULT KE_API KE_RemovePolicyTypeSuscription(const char* key, const char* type);

/** Whether a command may run in the present state of the installation. The result tells whether the state could be
 * read, the answer is in *allowed:
 * @code{.c}
 * uint32_t allowed = 0;
 * if (KE_CanRunCommand("KELUpd", &allowed) == KE_SUCCESS && allowed) update();
 * @endcode
 *
 * From state 200 on every command may. Below it KELTVEVT, KELConf and KELLnchr always may; KELTest in the states 40 to
 * 44, 47 and 48; KELUpg in 40, 42 to 44 and 46 to 48; KELUpd in 40 to 44 and 46 to 48; KELReport and KELQtine in 48; no
 * other one.
 *
 * @param command       its name, in any letter case; null counts as an unknown one
 * @param[out] allowed  receives 1 or 0; set to 0 before anything is read
 * @retval KE_MISSING_ARGUMENT     allowed is null
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       the store can be neither opened, read nor created, or cannot be repaired
 * @retval KE_CRYPTO_NOT_LOADED    the store is enciphered, and ApiCr.dll could not be loaded from the DLL's directory
 * @retval KE_CRYPTO_FAILED        the store could not be deciphered
 */
KE_RESULT KE_API KE_CanRunCommand(const char* command, uint32_t* allowed);

/** @} */

/** @defgroup ke_endpoints Server endpoints
 *
 * Which message goes to which SOAP action, and to which server, stands in the plain INI file KE_AGPRX.dat in the folder
 * KESAgent of the product. These exports take no lock: the caller keeps other writers of the same files away.
 * @{ */

/** Sets the server of the two integration actions in KE_AGPRX.dat beside the DLL's own folder, and with it the SOAP
 * namespace and action address, which are those of the product. Writes nothing to the trace log.
 *
 * @param server  its address; null removes the two servers
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       a write failed; all were tried
 */
KE_RESULT KE_API KE_SetURLSecureServer(const char* server);

/** Stores the server address in the configuration of the agent module, KELAGAPI.dll, which is bound for the call.
 *
 * @param server  its address, cut at 511 characters
 * @retval KE_MISSING_ARGUMENT    server is null; nothing was bound
 * @retval KE_EXCEPTION           an unexpected failure, such as memory that ran out
 * @retval KE_AGENT_NOT_LOADED    the agent module could not be loaded, or lacks a function that is needed
 * @retval KE_AGENT_READ_FAILED   the agent module refused to give its configuration record
 * @retval KE_AGENT_WRITE_FAILED  the agent module refused the changed record
 */
KE_RESULT KE_API KE_SetURLServer(const char* server);

/** Brings the configuration files of an installed product up to the current layout: message types, event settings,
 * module tokens, settings of update, upgrade and policies. Message types that exist stay as they are. The folders of
 * the product must exist.
 *
 * @param installDir  the product's folder, a full path, cut at 511 characters; one trailing backslash does not count
 * @retval KE_MISSING_ARGUMENT  installDir is null, empty or a single backslash; nothing was touched
 * @retval KE_EXCEPTION         an unexpected failure, such as memory that ran out
 * @retval KE_STORE_UNUSABLE    a file could not be written; everything else was still done
 */
KE_RESULT KE_API KE_UpgradeStart(const char* installDir);

/** @} */

/** @defgroup ke_events Events
 *
 * What happens on the machine goes to the event module, TvEvAPI.dll, which is loaded from the folder KELTVEVT beside
 * the DLL's own folder, queues the event and is freed again. Texts go to it as they are, null ones too.
 *
 * Threads: each call binds the module for itself; calls may run at the same time. KE_InitEventSystem() uses the
 * launcher: see the launcher operations.
 * @{ */

/** Reports the state of a scan, with the present time (UTC).
 *
 * @param product  that scans
 * @param taskId   of the scan
 * @param status   of the scan, handed on as it is
 * @retval KE_EXCEPTION           an unexpected failure, such as memory that ran out
 * @retval KE_EVENTS_UNAVAILABLE  the event module could not be loaded, or lacks a function
 * @retval KE_EVENT_NOT_SENT      the event module refused the connection or the event
 */
KE_RESULT KE_API KE_ScanStateEvent(const char* product, const char* taskId, int32_t status);

/** Reports a forced restart of the computer.
 *
 * @param product  that forces it
 * @retval KE_EXCEPTION           an unexpected failure, such as memory that ran out
 * @retval KE_EVENTS_UNAVAILABLE  the event module could not be loaded, or lacks a function
 * @retval KE_EVENT_NOT_SENT      the event module refused the connection or the event
 */
KE_RESULT KE_API KE_RebootForcedEvent(const char* product);

/** Reports that the agent is about to be uninstalled. First the action of the upgrade module runs; its result does not
 * count. Then the event is sent; once a connection was opened, the call lasts 30 seconds more, so that the event can be
 * delivered. Whatever came of that, the agent's shutdown script is then removed from the machine's local group policy,
 * which needs the rights of an administrator; its failure is not told.
 *
 * @param product  that is uninstalled
 * @retval KE_EXCEPTION           an unexpected failure, such as memory that ran out
 * @retval KE_EVENTS_UNAVAILABLE  the event module could not be loaded, or lacks a function
 * @retval KE_EVENT_NOT_SENT      the event module refused the connection or the event
 */
KE_RESULT KE_API KE_Uninstall(const char* product);

/** Reports an error of the agent, with the description that KE_GetEventDescription() finds. Without a description no
 * event is sent.
 *
 * @param eventClass  handed on as it is
 * @param source      handed on as it is
 * @param errorCode   number of the error: that of its description
 * @param insertText  what the description's "%s" stands for; may be null
 * @retval KE_EXCEPTION           an unexpected failure, such as memory that ran out
 * @retval KE_MODULE_NOT_LOADED   KePIRes.exe, which holds the descriptions, could not be loaded
 * @retval KE_EVENTS_UNAVAILABLE  the event module could not be loaded, or lacks a function
 * @retval KE_EVENT_NOT_SENT      the event module refused the connection or the event; or the error has no description
 */
KE_RESULT KE_API KE_GenerateEvent(uint32_t eventClass, uint32_t source, uint32_t errorCode, const char* insertText);

/** The description of an error. It is a string resource of KePIRes.exe in the folder KESAgent beside the DLL's own. In
 * one that contains "%s", insertText takes the place of the first, and "%%" becomes one percent sign. A description has
 * at most 511 characters; one that does not fit is cut, also at the end of the buffer, and that is a success.
 *
 * @param errorCode    number of the error
 * @param[out] buffer  receives the description; stays as it was after any failure
 * @param bufferSize   size of buffer in bytes
 * @param insertText   what the first "%s" stands for; null and empty: nothing
 * @retval KE_MISSING_ARGUMENT   buffer is null
 * @retval KE_BUFFER_TOO_SMALL   bufferSize is not positive
 * @retval KE_EXCEPTION          an unexpected failure, such as memory that ran out
 * @retval KE_MODULE_NOT_LOADED  KePIRes.exe could not be loaded
 * @retval KE_EVENT_NOT_SENT     it has no description of the error
 */
KE_RESULT KE_API KE_GetEventDescription(uint32_t errorCode, char* buffer, int32_t bufferSize, const char* insertText);

/** Has the launcher, KELMNAPI.dll from the folder Common, start the event service by the command "KELTVEVT -start".
 *
 * Threads: see the launcher operations.
 *
 * @retval KE_EXCEPTION           an unexpected failure, such as memory that ran out
 * @retval KE_EVENTS_UNAVAILABLE  the launcher could not be loaded, or could not run the command, or the command ended
 *                                with another exit code than 0
 */
KE_RESULT KE_API KE_InitEventSystem(void);

/** @} */

/** @defgroup ke_prompts Prompts
 *
 * The user is asked by the program KePIRes.exe, in the folder KESAgent beside the DLL's own folder.
 *
 * Threads: the questions and the countdown wait for the program's end, however long it takes. A caller that must not
 * block calls them on a thread of its own. Any number may wait at the same time.
 * @{ */

/** Asks whether the computer may be restarted now, and waits for the answer.
 *
 * @param[out] canReboot  receives the answer, the exit code of the program: 0, 1 or 2, whose meaning is the program's.
 *                        Set to 0 before anything else
 * @retval KE_MISSING_ARGUMENT     canReboot is null
 * @retval KE_NOT_CREATED          waiting for the program, or reading its exit code, failed
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_PROGRAM_NOT_STARTED  KePIRes.exe is missing or could not be started, or the directory of KELUtils.dll is
 *                                 unknown
 * @retval KE_PROMPT_FAILED        the program ended with an exit code that is no answer
 */
KE_RESULT KE_API KE_GetCanReboot(uint32_t* canReboot);

/** The same as KE_GetCanReboot().
 *
 * @param[out] canReboot  as for KE_GetCanReboot()
 * @param unused          not used
 * @retval KE_MISSING_ARGUMENT     canReboot is null
 * @retval KE_NOT_CREATED          waiting for the program, or reading its exit code, failed
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_PROGRAM_NOT_STARTED  KePIRes.exe is missing or could not be started, or the directory of KELUtils.dll is
 *                                 unknown
 * @retval KE_PROMPT_FAILED        the program ended with an exit code that is no answer
 */
KE_RESULT KE_API KE_GetCanRebootEx(uint32_t* canReboot, uint32_t unused);

/** Asks a question of any kind, and waits for the answer. Success and answer are two things:
 * @code{.c}
 * uint32_t answer = 0;
 * if (KE_GetUserResponse(&answer, 1, 300) == KE_SUCCESS) act_upon(answer); // asked for at most five minutes
 * else nobody_was_asked();                                               // answer is 0, which is no answer
 * @endcode
 *
 * @param[out] canReboot  receives the answer, as for KE_GetCanReboot(). Set to 0 before anything else
 * @param msgType         kind of the question, handed to the program as it is: 1 asks about a restart
 * @param seconds         how long the question may stay, in seconds; handed to the program as it is
 * @retval KE_MISSING_ARGUMENT     canReboot is null
 * @retval KE_NOT_CREATED          waiting for the program, or reading its exit code, failed
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_PROGRAM_NOT_STARTED  KePIRes.exe is missing or could not be started, or the directory of KELUtils.dll is
 *                                 unknown
 * @retval KE_PROMPT_FAILED        the program ended with an exit code that is no answer
 */
KE_RESULT KE_API KE_GetUserResponse(uint32_t* canReboot, int32_t msgType, int32_t seconds);

/** Shows the countdown to a restart, and waits for its end.
 *
 * @param seconds  length of the countdown, in seconds; handed to the program as it is
 * @retval KE_NOT_CREATED          waiting for the program, or reading its exit code, failed
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_PROGRAM_NOT_STARTED  KePIRes.exe is missing or could not be started, or the directory of KELUtils.dll is
 *                                 unknown
 * @retval KE_PROMPT_FAILED        the program ended with another exit code than 0
 */
KE_RESULT KE_API KE_ShowRebootCountDown(int32_t seconds);

/** Shows the installation dialog, and does not wait for it. A failure is traced only.
 *
 * @retval KE_SUCCESS    always, but for an exception
 * @retval KE_EXCEPTION  an unexpected failure, such as memory that ran out
 */
KE_RESULT KE_API KE_ShowInstallDialog(void);

/** Shows the installation dialog, and does not wait for it.
 *
 * @param rebootMsg  number of the dialog's message about a restart, handed to the program as it is;
 *                   KE_ShowInstallDialog() has 0
 * @retval KE_EXCEPTION            an unexpected failure, such as memory that ran out
 * @retval KE_PROGRAM_NOT_STARTED  KePIRes.exe is missing or could not be started, or the directory of KELUtils.dll is
 *                                 unknown
 */
KE_RESULT KE_API KE_ShowInstallDialogEx(uint32_t rebootMsg);

/** Closes the installation dialog, by the event `Global\KePIRes_InstallEvent`.
 *
 * @retval KE_SUCCESS  always, also without a dialog
 */
KE_RESULT KE_API KE_HideInstallDialog(void);

/** Closes the window of the installation guide, if there is one, and moves the installation state forward to 47. Does
 * this only in a state from 40 to 47, or when the state cannot be read.
 *
 * @retval KE_SUCCESS    always, but for an exception: also when the state could not be stored
 * @retval KE_EXCEPTION  an unexpected failure, such as memory that ran out
 */
KE_RESULT KE_API KE_HideInstalationGuide(void);

/** @} */

/** @defgroup ke_machine Machine identity
 *
 * Which machine this is.
 * @{ */

/** The hardware UUID of the machine, as Windows Management Instrumentation reports it: 36 characters, such as
 * "4C4C4544-0042-3510-8054-B4C04F4A3132". KELUTILS.INI beside the DLL switches the query off with CheckUUID=false, in
 * small letters, in its section UUID: the UUID is then the empty text.
 *
 * Threads: COM is initialised on the calling thread for the call, apartment-threaded; the process gets its security
 * settings unless it has some already. On a thread that uses COM multithreaded the call fails.
 *
 * @param[out] buffer  receives the UUID, cut when it does not fit. Stays as it was when the machine reports none, which
 *                     is a success too, so preset it; and after any failure
 * @param bufferSize   size of buffer in bytes, 37 for a whole UUID
 * @retval KE_MISSING_ARGUMENT  buffer is null
 * @retval KE_BUFFER_TOO_SMALL  bufferSize is not positive
 * @retval KE_NOT_CREATED       a step of the query failed, for example because the thread uses COM multithreaded
 * @retval KE_EXCEPTION         an unexpected failure, such as memory that ran out
 */
KE_RESULT KE_API KE_GetUUID(char* buffer, int32_t bufferSize);

/** @} */

/* ---- Function types
 * -------------------
 * Written from the declarations above by cmake/WriteFunctionTypes.cmake. */
/** @cond FUNCTION_TYPES */
/* clang-format off */
typedef KE_RESULT(KE_API* KE_GetAgentID_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetCustomerId_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetCertificate_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetDeviceID_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetUserRCM_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetPasswordRCM_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetAgentVersion_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetServerDate_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetContainer_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetLastErrorParam_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetInstallState_t)(int32_t* value);
typedef KE_RESULT(KE_API* KE_GetLastInstallError_t)(int32_t* value);
typedef KE_RESULT(KE_API* KE_IsInstallComplete_t)(int32_t* value);
typedef KE_RESULT(KE_API* KE_IsIntegrated_t)(int32_t* value);
typedef KE_RESULT(KE_API* KE_SetAgentID_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetAgentVersion_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetServerDate_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetContainer_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetPropertyInIntegra_t)(const char* key, const char* text);
typedef KE_RESULT(KE_API* KE_SetCustomerId_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetDeviceID_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetCertificate_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetUserRCM_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetPasswordRCM_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetLastErrorParam_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetLastInstallError_t)(const int32_t* error);
typedef KE_RESULT(KE_API* KE_SetInstallState_t)(const int32_t* state, int32_t onlyForward);
typedef KE_RESULT(KE_API* KE_Integrate_t)(const KE_TIME* time);
typedef KE_RESULT(KE_API* KE_DeIntegrate_t)(void);
typedef KE_RESULT(KE_API* KE_EncryptSetting_t)(const char* text, int32_t textLength, char* output, int32_t* outputSize);
typedef KE_RESULT(KE_API* KE_DecryptSetting_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetPasswordRCMDec_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetEncryptedFileValue_t)(const char* section, const char* key, char* buffer, int32_t size, const char* filePath);
typedef KE_RESULT(KE_API* KE_SetEncryptedFileValue_t)(const char* section, const char* key, const char* value, const char* filePath);
typedef KE_RESULT(KE_API* KE_SetUninstallPass_t)(const char* text, uint32_t reserved);
typedef KE_RESULT(KE_API* KE_GetUninstallPass_t)(char* buffer, int32_t size);
typedef KE_RESULT(KE_API* KE_GetUninstallPassEx_t)(char* buffer, int32_t size);
typedef int32_t(KE_API* KE_CheckInstallationPassw_t)(const char* password, int32_t stored);
typedef int32_t(KE_API* KE_IsNeededInstallationPassw_t)(void);
typedef KE_RESULT(KE_API* KE_SendReport_t)(void);
typedef KE_RESULT(KE_API* KE_AplyLocalRCMCfg_t)(void);
typedef KE_RESULT(KE_API* KE_UpdateNow_t)(void);
typedef KE_RESULT(KE_API* KE_UpdateNowEx_t)(uint32_t first, uint32_t second);
typedef KE_RESULT(KE_API* KE_GetUpdateNowConfig_t)(const char* section, const char* key, const char* def, char* buffer, uint32_t bufferSize);
typedef KE_RESULT(KE_API* KE_SetUpdateNowConfig_t)(const char* section, const char* key, const char* value, uint32_t onlyIfExists);
typedef KE_RESULT(KE_API* KE_SetNoCheckAVValue_t)(int32_t value);
typedef KE_RESULT(KE_API* KE_NotifyDeviceID_t)(int32_t target);
typedef KE_RESULT(KE_API* KE_LaunchKEPWInst_t)(void);
typedef KE_RESULT(KE_API* KE_SetTask_t)(const char* program, const char* module, const char* arguments, int32_t taskId, const char* startDay, const char* startTime);
typedef KE_RESULT(KE_API* KE_SetPeriodicTask_t)(const char* program, const char* module, const char* arguments, int32_t taskId, int32_t periodMinutes, int32_t randomWeekday);
typedef KE_RESULT(KE_API* KE_SetPeriodicTaskEx_t)(const char* module, const char* arguments, int32_t taskId, int32_t periodMinutes, int32_t startMinute, int32_t endMinute, int32_t randomWeekday);
typedef KE_RESULT(KE_API* KE_SetPeriodicTaskRangeDate_t)(const char* module, const char* arguments, int32_t taskId, int32_t periodMinutes, int32_t startMinute, int32_t endMinute, const char* periodicData);
typedef KE_RESULT(KE_API* KE_ScheduleTaskReboot_t)(const char* command, int32_t delaySeconds, uint32_t* result);
typedef KE_RESULT(KE_API* KE_RemoveScheduleTaskReboot_t)(uint32_t unused);
typedef KE_RESULT(KE_API* KE_ScheduleDefaultTasks_t)(void);
typedef KE_RESULT(KE_API* KE_UpgradeComplete_t)(uint32_t resultCode, const char* version);
typedef KE_RESULT(KE_API* KE_ScheduleUpgradeComplete_t)(int32_t resultCode, const char* version);
typedef KE_RESULT(KE_API* KE_GetConfiguratedProxy_t)(KE_PROXY* proxy);
typedef KE_RESULT(KE_API* KE_SetAgentProxyInfo_t)(const char* server, const char* port, const char* user, const char* password);
typedef KE_RESULT(KE_API* KE_SetStaticProxyInfo_t)(const char* host, const char* ips);
typedef KE_RESULT(KE_API* KE_GetInetConfig_t)(KE_PROXY* proxy, uint32_t size);
typedef KE_RESULT(KE_API* KE_InitializeSystem_t)(const char* root);
typedef KE_RESULT(KE_API* KE_InitializeSystemEx_t)(const char* root, const char* rebootRequired);
typedef KE_RESULT(KE_API* KE_AddPlugin_t)(const char* key, const char* host, const char* value);
typedef KE_RESULT(KE_API* KE_RemovePlugin_t)(const char* key, const char* host);
typedef KE_RESULT(KE_API* KE_SetVersion_t)(const char* key, const char* version);
typedef KE_RESULT(KE_API* KE_AddPolicyTypeSuscription_t)(const char* key, const char* type);
typedef KE_RESULT(KE_API* KE_RemovePolicyTypeSuscription_t)(const char* key, const char* type);
typedef KE_RESULT(KE_API* KE_CanRunCommand_t)(const char* command, uint32_t* allowed);
typedef KE_RESULT(KE_API* KE_SetURLSecureServer_t)(const char* server);
typedef KE_RESULT(KE_API* KE_SetURLServer_t)(const char* server);
typedef KE_RESULT(KE_API* KE_UpgradeStart_t)(const char* installDir);
typedef KE_RESULT(KE_API* KE_ScanStateEvent_t)(const char* product, const char* taskId, int32_t status);
typedef KE_RESULT(KE_API* KE_RebootForcedEvent_t)(const char* product);
typedef KE_RESULT(KE_API* KE_Uninstall_t)(const char* product);
typedef KE_RESULT(KE_API* KE_GenerateEvent_t)(uint32_t eventClass, uint32_t source, uint32_t errorCode, const char* insertText);
typedef KE_RESULT(KE_API* KE_GetEventDescription_t)(uint32_t errorCode, char* buffer, int32_t bufferSize, const char* insertText);
typedef KE_RESULT(KE_API* KE_InitEventSystem_t)(void);
typedef KE_RESULT(KE_API* KE_GetCanReboot_t)(uint32_t* canReboot);
typedef KE_RESULT(KE_API* KE_GetCanRebootEx_t)(uint32_t* canReboot, uint32_t unused);
typedef KE_RESULT(KE_API* KE_GetUserResponse_t)(uint32_t* canReboot, int32_t msgType, int32_t seconds);
typedef KE_RESULT(KE_API* KE_ShowRebootCountDown_t)(int32_t seconds);
typedef KE_RESULT(KE_API* KE_ShowInstallDialog_t)(void);
typedef KE_RESULT(KE_API* KE_ShowInstallDialogEx_t)(uint32_t rebootMsg);
typedef KE_RESULT(KE_API* KE_HideInstallDialog_t)(void);
typedef KE_RESULT(KE_API* KE_HideInstalationGuide_t)(void);
typedef KE_RESULT(KE_API* KE_GetUUID_t)(char* buffer, int32_t bufferSize);
/* clang-format on */
/** @endcond */

#ifdef __cplusplus
}
#endif

#endif
