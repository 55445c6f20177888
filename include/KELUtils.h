/** @file
 * KELUtils: the exported interface.
 *
 * KELUtils.dll is a 32-bit DLL. Every export is a C function with the standard Windows calling convention and an
 * undecorated name. This header compiles as C89 with a stdint.h, and as C++.
 *
 * Texts are zero-terminated strings of 8-bit characters in the code page of Windows. The library reads text arguments
 * only during the call. Sizes of buffers are in bytes. A getter copies a value only when the size is greater than the
 * length of the value, and never writes past the size.
 *
 * If the full path of an INI file has 260 characters or more, or a text for it 32,767 or more, the library does not
 * pass it to Windows: a write fails, a read returns the empty text.
 *
 * Results: an export that returns a KE_RESULT returns KE_SUCCESS, KE_EXCEPTION after an unexpected failure such as
 * memory that ran out, or a code that its contract lists. A contract can refer to a list at the head of its group, and
 * can add codes, or further causes of a listed code. An output stays unchanged after a failure, unless the contract
 * says otherwise. The two tests of the uninstall password return 1 or 0. Exceptions never leave an export.
 *
 * Threads: every export may be called from any thread, and works on the caller's thread. Groups with further rules
 * state them. Exports load DLLs, and some wait for programs: do not call them from a DllMain.
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
 * INTEGRA.DAT holds the identity and the state of the agent. It is in the folder KESAgent next to the folder of the
 * DLL; docs/file-formats.md describes it. An accessor first updates the cached copy, which repairs a damaged or missing
 * file, and then reads or changes one value.
 *
 * Values have no maximum length, and getters do not return the length. After KE_BUFFER_TOO_SMALL call again with a
 * larger buffer:
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
 * A setter first reads the certificate as KE_GetCertificate() does, so that a damaged store is repaired before it is
 * changed. Without ApiCr.dll a store in plain text is changed and written in plain text, with KE_SUCCESS.
 *
 * A setter replaces the file atomically: a process killed at any point leaves the old values or the new ones, never a
 * mixture. Exports that change or repair the store wait for other processes that do so, once and for five seconds at
 * most. After a wait that fails they proceed, and for the next minute no call of the process waits; the last write then
 * wins. A getter that has nothing to repair never waits. If another program holds a file open, the replace is retried
 * for a second for each file; then the file is overwritten in place.
 *
 * Threads: any number of threads may call accessors at the same time. Each call reads or leaves a complete value, and
 * sees changes of other processes.
 *
 * @section ke_reads Results of reading the store
 * - KE_NO_MODULE_DIRECTORY: the directory of KELUtils.dll is unknown
 * - KE_STORE_UNUSABLE: the store can be neither opened, read nor created, or cannot be repaired
 * - KE_CRYPTO_NOT_LOADED: the store is encrypted, and ApiCr.dll could not be loaded from the directory of the DLL
 * - KE_CRYPTO_FAILED: the store could not be decrypted
 *
 * @section ke_gets Results of getters of texts
 * - KE_MISSING_ARGUMENT: the buffer is null
 * - KE_BUFFER_TOO_SMALL: the size is not greater than the length of the value
 * - @ref ke_reads
 *
 * @section ke_sets Results of setters
 * - KE_MISSING_ARGUMENT: an argument is null, or empty where it must not be; the store was not changed
 * - KE_NOT_CREATED: the entry could not be created
 * - KE_STORE_UNUSABLE: the store cannot be written; the cached value is the new one until the store is read again
 * - KE_CRYPTO_FAILED: the store could not be encrypted, and was written in plain text
 * - @ref ke_reads
 * @{ */

/** Copies the agent's identifier. If the value is missing or empty, the library searches INTEGRA.BAK and then
 * INTEGRA.START. A copy that is searched replaces INTEGRA.DAT, and with it every other value.
 * @param[out] buffer  receives the value
 * @param size         of buffer; must be greater than the length of the value
 * @return @ref ke_gets; also:
 * @retval KE_STORE_UNUSABLE  no copy of the store holds the value
 */
KE_RESULT KE_API KE_GetAgentID(char* buffer, int32_t size);
/** Copies the customer's identifier. @copydetails KE_GetAgentID */
KE_RESULT KE_API KE_GetCustomerId(char* buffer, int32_t size);
/** Copies the agent's certificate. @copydetails KE_GetAgentID */
KE_RESULT KE_API KE_GetCertificate(char* buffer, int32_t size);

/** Copies the device's identifier, which the console assigns.
 * @param[out] buffer  receives the value; the empty text when it is missing
 * @param size         of buffer; must be greater than the length of the value
 * @return @ref ke_gets; also:
 * @retval KE_BUFFER_TOO_SMALL  size is not positive
 * @retval KE_STORE_UNUSABLE    the value is missing or empty
 */
KE_RESULT KE_API KE_GetDeviceID(char* buffer, int32_t size);
/** Copies the user of the remote control. @copydetails KE_GetDeviceID */
KE_RESULT KE_API KE_GetUserRCM(char* buffer, int32_t size);
/** Copies the password of the remote control as it is stored, by convention a setting text, which
 * KE_GetPasswordRCMDec() decrypts. @copydetails KE_GetDeviceID */
KE_RESULT KE_API KE_GetPasswordRCM(char* buffer, int32_t size);

/** Copies the agent's version.
 * @param[out] buffer  receives the value; the empty text when it is missing, with KE_SUCCESS
 * @param size         of buffer; must be greater than the length of the value
 * @return @ref ke_gets; also:
 * @retval KE_MISSING_ARGUMENT  KE_GetLastErrorParam(): size is not positive
 */
KE_RESULT KE_API KE_GetAgentVersion(char* buffer, int32_t size);
/** Copies the server's date, in the form that was stored. @copydetails KE_GetAgentVersion */
KE_RESULT KE_API KE_GetServerDate(char* buffer, int32_t size);
/** Copies the computer's container in the console. @copydetails KE_GetAgentVersion */
KE_RESULT KE_API KE_GetContainer(char* buffer, int32_t size);
/** Copies the last installation error's parameter. @copydetails KE_GetAgentVersion */
KE_RESULT KE_API KE_GetLastErrorParam(char* buffer, int32_t size);

/** Reads the state of the installation; 200 and more is a complete installation. The number consists of the decimal
 * digits up to the first other character; without digits it is 0.
 * @param[out] value  receives the number
 * @return @ref ke_reads; also:
 * @retval KE_MISSING_ARGUMENT  value is null
 */
KE_RESULT KE_API KE_GetInstallState(int32_t* value);
/** Reads the last installation error, 0 for none. @copydetails KE_GetInstallState */
KE_RESULT KE_API KE_GetLastInstallError(int32_t* value);

/** Checks whether the installation is complete: its state is 200 or more.
 * @param[out] value  receives 1 or 0; set to 0 before anything is read
 * @return @ref ke_reads; also:
 * @retval KE_MISSING_ARGUMENT  value is null
 */
KE_RESULT KE_API KE_IsInstallComplete(int32_t* value);

/** Checks whether the computer is integrated into the console: the store has an integration date and a device
 * identifier.
 * @param[out] value  receives 1 or 0
 * @return @ref ke_reads; also:
 * @retval KE_MISSING_ARGUMENT  value is null
 */
KE_RESULT KE_API KE_IsIntegrated(int32_t* value);

/** Stores the agent's identifier.
 * @param text  the value, not empty
 * @return @ref ke_sets
 */
KE_RESULT KE_API KE_SetAgentID(const char* text);
/** Stores the agent's version. @copydetails KE_SetAgentID */
KE_RESULT KE_API KE_SetAgentVersion(const char* text);
/** Stores the server's date, in any form. @copydetails KE_SetAgentID */
KE_RESULT KE_API KE_SetServerDate(const char* text);
/** Stores the computer's container in the console. @copydetails KE_SetAgentID */
KE_RESULT KE_API KE_SetContainer(const char* text);

/** Stores a value under any key of the section INTEGRATION; appends a new key. A key that contains "=" or a line break,
 * or begins with "[", is lost when the file is read again.
 * @param key   the key, not empty; case-insensitive
 * @param text  the value, not empty
 * @return @ref ke_sets
 */
KE_RESULT KE_API KE_SetPropertyInIntegra(const char* key, const char* text);

/** Stores the customer's identifier. The results of plug-ins that a setter notifies are traced, but not returned.
 * @param text  the value, which may be empty
 * @return @ref ke_sets
 */
KE_RESULT KE_API KE_SetCustomerId(const char* text);
/** Stores the agent's certificate. @copydetails KE_SetCustomerId */
KE_RESULT KE_API KE_SetCertificate(const char* text);
/** Stores the device's identifier, and notifies installer and remote-control plug-in. @copydetails KE_SetCustomerId */
KE_RESULT KE_API KE_SetDeviceID(const char* text);
/** Stores the user of the remote control, and notifies its plug-in. @copydetails KE_SetCustomerId */
KE_RESULT KE_API KE_SetUserRCM(const char* text);
/** Stores the password of the remote control, by convention a setting text of KE_EncryptSetting(), and notifies its
 * plug-in. @copydetails KE_SetCustomerId */
KE_RESULT KE_API KE_SetPasswordRCM(const char* text);

/** Stores the parameter text of the last installation error.
 * @param text  the value; null and empty store the empty text
 * @return @ref ke_sets, but never KE_MISSING_ARGUMENT
 */
KE_RESULT KE_API KE_SetLastErrorParam(const char* text);

/** Stores the last installation error, in decimal.
 * @param error  the error, read during the call
 * @return @ref ke_sets
 */
KE_RESULT KE_API KE_SetLastInstallError(const int32_t* error);

/** Stores the state of the installation, in decimal.
 * @param state        the state, read during the call
 * @param onlyForward  other than 0: a state that is not greater than the stored one is ignored, with KE_SUCCESS
 * @return @ref ke_sets
 */
KE_RESULT KE_API KE_SetInstallState(const int32_t* state, int32_t onlyForward);

/** Stores the integration date, as "2024-03-05 07:08:09". The fields are not checked; a text of more than 39 characters
 * is cut there. With a device identifier, the computer is then integrated.
 * @param time  the date and time, read during the call
 * @return @ref ke_sets
 */
KE_RESULT KE_API KE_Integrate(const KE_TIME* time);

/** Empties the integration date and the device identifier; the entries stay. Writes nothing when both are missing. One
 * failed write is ignored.
 * @return @ref ke_reads; also:
 * @retval KE_STORE_UNUSABLE  both writes failed
 */
KE_RESULT KE_API KE_DeIntegrate(void);

/** @} */

/** @defgroup ke_settings Encrypted settings
 *
 * A setting text is the base64 form of a setting that ApiCr.dll has encrypted: lines of 76 characters, separated by
 * CR LF. A password of the store can be a setting text, also on one line. ApiCr.dll is loaded from the directory of the
 * DLL.
 *
 * The two converters check the crypto module before null arguments. An error of the crypto module is returned
 * unchanged.
 *
 * @section ke_decrypts Results of getters of decrypted passwords
 * - KE_MISSING_ARGUMENT: buffer is null
 * - KE_BUFFER_TOO_SMALL: size is too small
 * - KE_NOT_CREATED: no memory for the decrypted password
 * - KE_STORE_UNUSABLE: the password is missing or empty
 * - @ref ke_reads
 * @{ */

/** Encrypts a text and writes its setting text. With a null output it only returns the required size:
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
 * A setting text has at most 354 characters: a caller with such a buffer needs no first call. A setting may have 253
 * characters, and 254 bytes in UTF-8. A longer one, and a negative textLength, is encrypted as the empty setting, with
 * KE_SUCCESS.
 * @param text                the setting, in the code page of Windows
 * @param textLength          maximum number of characters to read from text
 * @param[out] output         receives the setting text without a terminating zero; null asks for the size
 * @param[in,out] outputSize  on entry the size of output; receives the length of the setting text, or with a null
 *                            output the required size, which is slightly greater
 * @return one of these codes; any other value is the error of the crypto module
 * @retval KE_MISSING_ARGUMENT   text or outputSize is null
 * @retval KE_BUFFER_TOO_SMALL   output is null: *outputSize is the required size. Or *outputSize is smaller than that:
 *                               output and *outputSize stay unchanged
 * @retval KE_CRYPTO_NOT_LOADED  ApiCr.dll could not be loaded
 */
KE_RESULT KE_API KE_EncryptSetting(const char* text, int32_t textLength, char* output, int32_t* outputSize);

/** Replaces a setting text by the plain setting, which is in UTF-8. Characters that are not base64 are skipped.
 * @code{.c}
 * char buffer[512]; // larger than any setting text
 * strcpy(buffer, settingText);
 * if (KE_DecryptSetting(buffer, sizeof buffer) == KE_SUCCESS) use(buffer);
 * @endcode
 * @param[in,out] buffer  on entry the setting text, zero-terminated; receives the plain setting
 * @param size            of buffer; must be at least 2 greater than the length of the encrypted block, however short
 *                        the setting is. The length of a non-empty setting text always is; an empty one needs 2
 * @return one of these codes; any other value is the error of the crypto module
 * @retval KE_MISSING_ARGUMENT   buffer is null
 * @retval KE_BUFFER_TOO_SMALL   size is too small
 * @retval KE_NOT_CREATED        no memory for the decrypted setting
 * @retval KE_CRYPTO_NOT_LOADED  ApiCr.dll could not be loaded
 */
KE_RESULT KE_API KE_DecryptSetting(char* buffer, int32_t size);

/** Copies the decrypted password of the remote control, in UTF-8. If decryption fails, the buffer receives the decoded
 * base64 bytes, with KE_SUCCESS.
 * @param[out] buffer  receives the password; the empty text when it is missing
 * @param size         of buffer, positive; the minimum is that of KE_DecryptSetting()
 * @return @ref ke_decrypts
 */
KE_RESULT KE_API KE_GetPasswordRCMDec(char* buffer, int32_t size);

/** @} */

/** @defgroup ke_files Encrypted value files
 *
 * INI files that are encrypted as a whole, with ApiCr.dll from the folder Common of the product's install path. Plain
 * INI files are read too. A missing file is created empty. A relative path is relative to the current directory.
 *
 * Threads: calls for different files may run at the same time. The caller keeps other writers, and other threads that
 * call KE_SetEncryptedFileValue(), away from the same file.
 *
 * @section ke_value_files Results of value files
 * - KE_MISSING_ARGUMENT: an argument is null, or filePath is empty; nothing was changed
 * - KE_NOT_CREATED: no memory
 * - KE_CRYPTO_FAILED: the file could not be opened, created, read or decrypted, or is marked as encrypted and ApiCr.dll
 *   could not be loaded; the file stays unchanged
 * @{ */

/** Copies one value of an encrypted file.
 * @param section,key  names of section and key, cut at 255 characters; case-insensitive
 * @param[out] buffer  receives the value
 * @param size         of buffer; must be greater than the length of the value
 * @param filePath     the file
 * @return @ref ke_value_files; also:
 * @retval KE_BUFFER_TOO_SMALL  size is not positive, or not greater than the length of the value
 * @retval KE_STORE_UNUSABLE    the value is missing or empty
 */
KE_RESULT KE_API KE_GetEncryptedFileValue(const char* section, const char* key, char* buffer, int32_t size,
                                          const char* filePath);

/** Sets one value of an encrypted file, adds a new section and key, and replaces the file atomically. Without ApiCr.dll
 * the file is written in plain text, with KE_SUCCESS. A full disk leaves the file unchanged, with KE_SUCCESS.
 * @param section,key  names of section and key, cut at 255 characters; case-insensitive
 * @param value        the value, which may be empty; line breaks are removed
 * @param filePath     the file
 * @return @ref ke_value_files; also:
 * @retval KE_CRYPTO_FAILED  the file could not be opened for writing. Or the text could not be encrypted, and was
 *                           written in plain text
 */
KE_RESULT KE_API KE_SetEncryptedFileValue(const char* section, const char* key, const char* value,
                                          const char* filePath);

/** @} */

/** @defgroup ke_password Uninstall password
 *
 * The uninstall password is stored in the form in which it was given, by convention a setting text. These exports first
 * read the store, as the accessors do.
 * @{ */

/** Stores the uninstall password; the empty text removes it.
 * @param text      the value, by convention a setting text of KE_EncryptSetting()
 * @param reserved  not used
 * @return @ref ke_sets
 */
KE_RESULT KE_API KE_SetUninstallPass(const char* text, uint32_t reserved);

/** Copies the decrypted uninstall password, in UTF-8. If decryption fails, the buffer receives the decoded base64
 * bytes, with KE_SUCCESS.
 * @param[out] buffer  receives the password
 * @param size         of buffer; the minimum is that of KE_DecryptSetting()
 * @return @ref ke_decrypts
 */
KE_RESULT KE_API KE_GetUninstallPass(char* buffer, int32_t size);

/** Copies the uninstall password as it is stored.
 * @param[out] buffer  receives the text
 * @param size         of buffer; must be greater than the length of the text
 * @return @ref ke_gets; also:
 * @retval KE_STORE_UNUSABLE  the password is missing or empty
 */
KE_RESULT KE_API KE_GetUninstallPassEx(char* buffer, int32_t size);

/** Compares a password with the uninstall password, byte for byte. Passwords of more than 2047 characters never match.
 * @param password  the password to check; null and empty never match
 * @param stored    0: compare with the decrypted password, which is in UTF-8; else with the stored text
 * @return no result code: 1 when they match; else 0, also after any failure and when no password is configured
 */
int32_t KE_API KE_CheckInstallationPassw(const char* password, int32_t stored);

/** Checks whether an uninstall password is configured.
 * @return no result code: 1 when it is; else 0, also when the store cannot be read, or the stored text has more than
 *         2047 characters
 */
int32_t KE_API KE_IsNeededInstallationPassw(void);

/** @} */

/** @defgroup ke_launcher Launcher operations
 *
 * Work for the launcher module KELMNAPI.dll, loaded from the folder Common next to the folder of the DLL, for plug-ins
 * and for the installer helper; and the settings files of these.
 *
 * Threads: the launcher is bound once per process, without a lock. Do not run KE_SendReport(), KE_AplyLocalRCMCfg(),
 * KE_UpdateNow(), KE_UpdateNowEx(), KE_InitEventSystem() and KE_RemovePlugin() for the host KELUpd at the same time in
 * one process.
 * @{ */

/** Makes the launcher send the report, by the command "KELREPORT -R -force". The launcher is also searched for in the
 * directory of the DLL.
 * @return KE_SUCCESS, also after a failure, which is traced
 */
KE_RESULT KE_API KE_SendReport(void);

/** Makes the launcher apply the local configuration of the remote control, by the command "KELCONF -LocalCfg -force".
 * @return KE_SUCCESS, also after a failure, which is traced
 */
KE_RESULT KE_API KE_AplyLocalRCMCfg(void);

/** Makes the launcher update the agent now. If the first update succeeds, the launcher continues it every 20 seconds
 * for as long as the exit code is 1559 (more to do). The call blocks meanwhile, without a limit.
 * @return one of these codes; any other value is the result of the first call of the launcher, 0 for success. Exit
 *         codes, and the results of the repetitions, are ignored
 * @retval KE_LAUNCHER_NOT_LOADED  the launcher could not be loaded, or lacks a function; or another thread freed it
 *                                 during the update
 */
KE_RESULT KE_API KE_UpdateNow(void);

/** Makes the launcher update the agent now, as KE_UpdateNow() does, and returns how the update ended.
 * @param first,second  passed to the launcher unchanged
 * @return one of these codes; any other value is the exit code of the update; or, if the first call failed without a
 *         positive exit code, the result of the launcher
 * @retval KE_LAUNCHER_NOT_LOADED  as for KE_UpdateNow()
 * @retval KE_UPDATE_FAILED_1566   the update ended with exit code 1566
 * @retval KE_UPDATE_FAILED_1558   the update ended with exit code 1558
 * @retval KE_UPDATE_FAILED_1565   the update ended with exit code 1565
 * @retval KE_UPDATE_FAILED_5000   the update ended with exit code 5000
 * @retval KE_UPDATE_FAILED_1567   the update ended with exit code 1567
 */
KE_RESULT KE_API KE_UpdateNowEx(uint32_t first, uint32_t second);

/** Reads a value of the update settings, UPDNW.DAT in the folder KesLpmng, by GetPrivateProfileString.
 * @param section      name of the section; null lists the sections
 * @param key          name of the key; null lists the keys
 * @param def          the default, for a missing value
 * @param[out] buffer  receives the value, cut to the size; null reads nothing
 * @param bufferSize   size of buffer, of which at most 1 MiB is used; 0 reads nothing
 * @return KE_SUCCESS, also when nothing was read
 */
KE_RESULT KE_API KE_GetUpdateNowConfig(const char* section, const char* key, const char* def, char* buffer,
                                       uint32_t bufferSize);

/** Sets a value of the update settings, UPDNW.DAT in the folder KesLpmng, by WritePrivateProfileString.
 * @param section       name of the section; null writes nothing
 * @param key           name of the key; null removes the section
 * @param value         the value; null removes the key
 * @param onlyIfExists  other than 0: a missing file is not created
 * @return KE_SUCCESS, also when nothing was written
 */
KE_RESULT KE_API KE_SetUpdateNowConfig(const char* section, const char* key, const char* value, uint32_t onlyIfExists);

/** Stores whether the agent may be installed together with other products, in decimal in KelUpg.ini in the folder
 * KelUpg: NoCheckAV in the section GENERAL and InstallWithOtherProducts in the section KEC. A failed write is ignored.
 * @param value  any number
 * @retval KE_NOT_CREATED  the directory of KELUtils.dll is unknown
 */
KE_RESULT KE_API KE_SetNoCheckAVValue(int32_t value);

/** Notifies plug-ins of the stored device identifier. A plug-in is loaded for the call from the path in the section
 * PLUGINS of its host's INI file: key RCM of Kelconf.ini (remote control), key KEC of KelUpg.ini (installer).
 * @param target  0: both plug-ins, the installer plug-in first; 1: the installer plug-in; 2: the remote-control plug-in
 * @return @ref ke_reads, or one of these codes; any other value is the result of the plug-in. Of two failures, that of
 *         the installer plug-in is returned
 * @retval KE_MISSING_ARGUMENT           target is another number; a negative one is detected before the store is read
 * @retval KE_BUFFER_TOO_SMALL           the device identifier has 38 characters or more
 * @retval KE_STORE_UNUSABLE             the device identifier is missing
 * @retval KE_INSTALLER_PLUGIN_UNUSABLE  the installer plug-in has no full path in the INI file, cannot be loaded or
 *                                       initialised, or lacks a function
 * @retval KE_MODULE_NOT_LOADED          the same for the remote-control plug-in
 */
KE_RESULT KE_API KE_NotifyDeviceID(int32_t target);

/** Starts the installer helper, KepWInst.exe -FORCE, from the folder KepWInst next to the folder of the DLL, else from
 * the directory of the DLL. Does not wait for it.
 * @retval KE_INSTALL_HELPER_NOT_STARTED  it could not be started from either place, or the directory of KELUtils.dll is
 *                                        unknown
 */
KE_RESULT KE_API KE_LaunchKEPWInst(void);

/** @} */

/** @defgroup ke_scheduling Scheduling
 *
 * The scheduler, zumat, keeps the jobs. It is in the folder Scheduler next to the folder of the DLL, or in the
 * directory of the DLL. Each export runs it with one or more command lines, cut at 8198 characters each, and waits for
 * each up to 90 seconds. Nothing is repeated or undone. docs/interfaces.md describes the command lines.
 *
 * A job has a program that the scheduler starts, such as "KEPLPMNG" for the plug-in manager, a module that runs under
 * it, the arguments of the module, and a task ID, a positive number, for later changes. Null texts are empty. Texts
 * must not contain double quotes: nothing is escaped.
 *
 * A periodic job is added and then edited with the same clauses, so it exists afterwards whether or not its task ID did
 * before. Only the result of the edit is returned.
 *
 * Threads: nothing is locked. Calls at the same time start several schedulers, which take turns.
 *
 * @section ke_schedules Results of the scheduler
 * - KE_SCHEDULER_NOT_STARTED: the scheduler is missing or cannot run, or the directory of KELUtils.dll is unknown
 * - KE_SCHEDULER_FAILED: the scheduler ended with an exit code other than 0
 * - KE_SCHEDULER_TIMEOUT: the scheduler did not end within 90 seconds, and was left running
 * @{ */

/** Schedules a job for a fixed day and time: added, never edited.
 * @param program,arguments   of the job
 * @param module              of the job, not empty
 * @param taskId              from 1
 * @param startDay,startTime  in the scheduler's notation; not checked
 * @return @ref ke_schedules; also:
 * @retval KE_MISSING_ARGUMENT  module is null or empty
 * @retval KE_OUT_OF_RANGE      startDay or startTime is null, or taskId is below 1
 */
KE_RESULT KE_API KE_SetTask(const char* program, const char* module, const char* arguments, int32_t taskId,
                            const char* startDay, const char* startTime);

/** Creates or redefines a periodic job. The scheduler draws its first start of a day: from the minute taskId mod 15
 * after midnight to one period later, but at least to 00:29 and at most to 23:59. Then the boot jobs of the module are
 * activated, whatever the result was.
 * @param program,module,arguments  of the job
 * @param taskId                    from 1
 * @param periodMinutes             from 1. A week or more is rounded down to weeks, a day or more to days
 * @param randomWeekday             for a period below a day. 0: all days; else one day from Monday to Friday, drawn at
 *                                  random
 * @return @ref ke_schedules; also:
 * @retval KE_MISSING_ARGUMENT  module is null or empty; the job is written nevertheless
 * @retval KE_OUT_OF_RANGE      periodMinutes or taskId is below 1
 */
KE_RESULT KE_API KE_SetPeriodicTask(const char* program, const char* module, const char* arguments, int32_t taskId,
                                    int32_t periodMinutes, int32_t randomWeekday);

/** Creates or redefines a periodic job of the plug-in manager that starts within a window of the day. Then the boot
 * jobs of the module are deactivated; of two failures, that of the job is returned.
 * @param module                       of the job, not empty
 * @param arguments,taskId             as for KE_SetPeriodicTask()
 * @param periodMinutes,randomWeekday  as for KE_SetPeriodicTask()
 * @param startMinute,endMinute        the window, in minutes since midnight, in this order; clamped to 29 to 1439
 * @return @ref ke_schedules; also:
 * @retval KE_MISSING_ARGUMENT  module is null or empty
 * @retval KE_OUT_OF_RANGE      periodMinutes or taskId is below 1, a minute is negative, or endMinute is before
 *                              startMinute
 */
KE_RESULT KE_API KE_SetPeriodicTaskEx(const char* module, const char* arguments, int32_t taskId, int32_t periodMinutes,
                                      int32_t startMinute, int32_t endMinute, int32_t randomWeekday);

/** Creates or redefines a periodic job of the plug-in manager with a recurrence in the scheduler's notation. Then the
 * boot jobs of the module are deactivated; of two failures, that of the job is returned.
 * @param module                   of the job, not empty
 * @param arguments,taskId         as for KE_SetPeriodicTask()
 * @param periodMinutes            only checked: from 1
 * @param startMinute,endMinute    as for KE_SetPeriodicTaskEx(); a 0 omits the window
 * @param periodicData             the recurrence, such as "-Every:Days:2"; passed to the scheduler unchanged
 * @return @ref ke_schedules; also:
 * @retval KE_MISSING_ARGUMENT  module is null or empty
 * @retval KE_OUT_OF_RANGE      as for KE_SetPeriodicTaskEx()
 */
KE_RESULT KE_API KE_SetPeriodicTaskRangeDate(const char* module, const char* arguments, int32_t taskId,
                                             int32_t periodMinutes, int32_t startMinute, int32_t endMinute,
                                             const char* periodicData);

/** Schedules a command of the plug-in manager once, after the next boot.
 * @param command       a module with its arguments, not empty
 * @param delaySeconds  after the boot, in seconds, from 0
 * @param[out] result   set to 0, without a meaning; unchanged after KE_OUT_OF_RANGE
 * @retval KE_SCHEDULER_NOT_STARTED  any failure of the scheduler
 * @retval KE_OUT_OF_RANGE           command is null or empty, delaySeconds is negative, or result is null
 */
KE_RESULT KE_API KE_ScheduleTaskReboot(const char* command, int32_t delaySeconds, uint32_t* result);

/** Does nothing.
 * @param unused  not used
 * @retval KE_SUCCESS  always
 */
KE_RESULT KE_API KE_RemoveScheduleTaskReboot(uint32_t unused);

/** Schedules all jobs of the agent, and starts the installer helper. The jobs depend on whether the computer is
 * integrated: 23 commands if it is, else 21, of up to 90 seconds each. Every job is tried; the last failure is
 * returned, but that of the installer helper before any other.
 * @return @ref ke_schedules; also:
 * @retval KE_INSTALL_HELPER_NOT_STARTED  the installer helper could not be started
 */
KE_RESULT KE_API KE_ScheduleDefaultTasks(void);

/** Completes an upgrade. If the computer is not integrated, runs the integration test and waits for it for up to three
 * minutes. Schedules the jobs again; stores the version; starts the plug-in manager as KE_ScheduleUpgradeComplete()
 * does; copies INTEGRA.DAT over INTEGRA.START if it can be read and has four sections or more. Failures of the
 * scheduler and of the copy are only traced.
 * @param resultCode  of the Windows installer: 0 and 3010 store the version
 * @param version     of the agent, not empty if it is stored
 * @return @ref ke_sets; also:
 * @retval KE_PROGRAM_NOT_STARTED  the plug-in manager could not be started
 */
KE_RESULT KE_API KE_UpgradeComplete(uint32_t resultCode, const char* version);

/** Starts the plug-in manager's module KELUpg to complete the upgrade, and does not wait for it.
 * @param resultCode  of the Windows installer, passed in decimal
 * @param version     of the agent; the arguments together are cut at 1023 characters
 * @retval KE_PROGRAM_NOT_STARTED  the plug-in manager could not be started
 */
KE_RESULT KE_API KE_ScheduleUpgradeComplete(int32_t resultCode, const char* version);

/** @} */

/** @defgroup ke_proxy Proxy
 *
 * How the agent reaches its server. The settings are records of the agent module KELAGAPI.dll, which is loaded from the
 * folder Common, else from the directory of the DLL, and freed after the call. KE_SetAgentProxyInfo() stores user and
 * password in UTF-8; the getters return the bytes of the record.
 *
 * @section ke_agents Results of the agent module
 * - KE_AGENT_NOT_LOADED: the agent module could not be loaded
 * - KE_AGENT_INCOMPLETE: the agent module lacks a function
 * @{ */

/** Reads the proxy in use, else the stored one. Host and port are filled only from an address with a ":": the host is
 * the part before the first ":", the port the decimal number after it, or 0. If nothing is
 * stored, clears the proxy, with KE_SUCCESS.
 * @param[out] proxy  receives the proxy; cleared after KE_AGENT_READ_FAILED
 * @return @ref ke_agents; also:
 * @retval KE_MISSING_ARGUMENT   proxy is null
 * @retval KE_AGENT_READ_FAILED  a record could not be read
 */
KE_RESULT KE_API KE_GetConfiguratedProxy(KE_PROXY* proxy);

/** Stores the proxy of the agent and activates it. The arguments are traced unchanged. After a failure nothing was
 * stored.
 * @param server    its host, not empty; with the port cut at 255 characters
 * @param port      in decimal; empty means 80
 * @param user      a setting text of KE_EncryptSetting(), at most 1023 characters; the decrypted text is cut at 127
 *                  bytes. Empty: neither user nor password is stored
 * @param password  a setting text, as user; empty: no password is stored
 * @return @ref ke_agents, or one of these codes; any other value is the error of the crypto module
 * @retval KE_MISSING_ARGUMENT     server, port, user or password is null, or server is empty
 * @retval KE_NOT_CREATED          no memory for the decrypted user or password
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_CRYPTO_NOT_LOADED    user or password is not empty, and ApiCr.dll could not be loaded from the directory
 *                                 of the DLL
 * @retval KE_OUT_OF_RANGE         user or password has more than 1023 characters
 * @retval KE_REGISTRY_UNUSABLE    the agent module could not store the record
 */
KE_RESULT KE_API KE_SetAgentProxyInfo(const char* server, const char* port, const char* user, const char* password);

/** Stores the static proxy; without host and addresses, switches it off.
 * @param host  a host name, cut at 255 characters; may be null or empty
 * @param ips   a list of addresses, cut at 319 characters; may be null or empty
 * @return @ref ke_agents; also:
 * @retval KE_AGENT_WRITE_FAILED  the agent module could not store the record
 */
KE_RESULT KE_API KE_SetStaticProxyInfo(const char* host, const char* ips);

/** Returns the proxy for the internet. First calls the installer plug-in, with proxy and size unchanged, and returns
 * its result. Its path is the key KEC of the section PLUGINS of KelUpg.ini, and must begin with a drive or a share. If
 * the plug-in is not usable, or returns KE_INSTALLER_PLUGIN_UNUSABLE, calls the agent module: the host is then the
 * address up to its first ":", the port the number after that, 80 if it is missing or 0.
 * @code{.c}
 * KE_PROXY proxy;
 * memset(&proxy, 0, sizeof proxy);
 * if (KE_GetInetConfig(&proxy, sizeof proxy) == KE_SUCCESS && proxy.host[0] != '\0') connect_through(&proxy);
 * @endcode
 * @param[out] proxy  receives the proxy; an empty host means no proxy. A plug-in that fails may have changed it
 * @param size        of proxy: sizeof(KE_PROXY)
 * @return @ref ke_agents, or one of these codes; any other value is the result of the plug-in
 * @retval KE_MISSING_ARGUMENT   proxy is null
 * @retval KE_BUFFER_TOO_SMALL   without a usable plug-in: size does not cover all fields of a KE_PROXY, 773 bytes
 * @retval KE_NOT_CREATED        the agent module could not determine the proxy
 * @retval KE_AGENT_READ_FAILED  the agent module could not return the proxy
 */
KE_RESULT KE_API KE_GetInetConfig(KE_PROXY* proxy, uint32_t size);

/** @} */

/** @defgroup ke_registration Registration
 *
 * The files by which the agent's programs find each other: INI files of the modules that host plug-ins, and token files
 * of the plug-in manager, the scheduler and the watchdog. Nothing is cached: every call edits the files, and a failure
 * undoes nothing. Keys, values and types are passed to the profile functions of Windows unchanged. Plug-ins, versions
 * and subscriptions are registered in the folders next to the folder of the DLL.
 *
 * Threads: the profile functions of Windows take turns on a file. Do not run KE_InitializeSystem() and
 * KE_InitializeSystemEx() in two threads at once.
 *
 * @section ke_registers Results of registration
 * - KE_MISSING_ARGUMENT: an argument that must not be empty is null or empty
 * - KE_NO_MODULE_DIRECTORY: the directory of KELUtils.dll is unknown
 * - KE_STORE_UNUSABLE: Windows reports a failed write or removal, as for a missing folder
 * @{ */

/** Writes all registration files of an installation: the token files, then the standard plug-ins of the configuration,
 * update and upgrade module. Creates their folders, but not root. Before that, also for an invalid root, every
 * protection plug-in in the registry is asked to register itself again. Stops at the first file that fails. Idempotent.
 * @param root  the folder of the installation, a full path; one trailing backslash is ignored
 * @retval KE_MISSING_ARGUMENT  root is null, empty or a single backslash
 * @retval KE_STORE_UNUSABLE    a token file could not be opened, or a value of an INI file could not be written
 */
KE_RESULT KE_API KE_InitializeSystem(const char* root);

/** Does the same as KE_InitializeSystem(), for an installation that ends with a reboot: first writes rebootRequired as
 * REBOOT_REQUIRED to the upgrade module's file next to the folder of the DLL, also for an invalid root. A failure of
 * that write is ignored.
 * @param root            as for KE_InitializeSystem()
 * @param rebootRequired  "TRUE", case-insensitive; any other text, and null, writes nothing
 * @retval KE_MISSING_ARGUMENT  as for KE_InitializeSystem()
 * @retval KE_STORE_UNUSABLE    as for KE_InitializeSystem()
 */
KE_RESULT KE_API KE_InitializeSystemEx(const char* root, const char* rebootRequired);

/** Adds a plug-in to the file of its host module: HOST.ini in the folder HOST, section PLUGINS.
 * @param key    of the plug-in, not empty
 * @param host   the host module, not empty
 * @param value  by convention the path of the plug-in in double quotes; null removes the key
 * @return @ref ke_registers
 */
KE_RESULT KE_API KE_AddPlugin(const char* key, const char* host, const char* value);

/** Removes a plug-in from the file of its host module. For the host KELUpg (case-insensitive) the file then records
 * that the component is not installed. For the host KELUpd (case-insensitive) the launcher KELMNAPI.dll, from the
 * folder Common, then runs the command "KELUPD -REMOVEINFO:" with the key; the plug-in stays removed if that fails.
 *
 * Threads: for KELUpd, see the launcher operations.
 * @param key   of the plug-in, not empty
 * @param host  the host module, not empty
 * @return @ref ke_registers; also, for KELUpd:
 * @retval KE_STORE_UNUSABLE       the command ended with an exit code other than 0
 * @retval KE_PROGRAM_NOT_STARTED  the launcher could not run the command
 * @retval KE_LAUNCHER_NOT_LOADED  the launcher could not be loaded, or lacks a function
 */
KE_RESULT KE_API KE_RemovePlugin(const char* key, const char* host);

/** Records the installed version of a component in the upgrade module's file. For the component KEAGENT
 * (case-insensitive) the action of the upgrade module then runs; its result is ignored.
 * @param key      of the component, not empty
 * @param version  any text, not empty
 * @return @ref ke_registers
 */
KE_RESULT KE_API KE_SetVersion(const char* key, const char* version);

/** Subscribes a plug-in to a policy type, in the configuration module's file. The console's plug-in, KEC
 * (case-sensitive), replaces the configuration module's own, KELSYSCF; its removal restores that one.
 * @param key   of the plug-in, not empty
 * @param type  of the policies, such as "101", not empty
 * @return @ref ke_registers
 */
KE_RESULT KE_API KE_AddPolicyTypeSuscription(const char* key, const char* type);
/** Removes the subscription of a plug-in to a policy type. @copydetails KE_AddPolicyTypeSuscription */
KE_RESULT KE_API KE_RemovePolicyTypeSuscription(const char* key, const char* type);

/** Checks whether a command may run in the current state of the installation.
 *
 * From state 200 on every command may. In lower states KELTVEVT, KELConf and KELLnchr always may; KELTest in 40 to 44,
 * 47 and 48; KELUpg in 40, 42 to 44 and 46 to 48; KELUpd in 40 to 44 and 46 to 48; KELReport and KELQtine in 48; no
 * other command.
 * @param command       its name, case-insensitive; null is an unknown command
 * @param[out] allowed  receives 1 or 0; set to 0 before anything is read
 * @return @ref ke_reads; also:
 * @retval KE_MISSING_ARGUMENT  allowed is null
 */
KE_RESULT KE_API KE_CanRunCommand(const char* command, uint32_t* allowed);

/** @} */

/** @defgroup ke_endpoints Server endpoints
 *
 * The INI file KE_AGPRX.dat in the folder KESAgent maps messages to SOAP actions and servers. These exports take no
 * lock: the caller keeps other writers of the same files away.
 * @{ */

/** Sets the server of the two integration actions in KE_AGPRX.dat, in the folder KESAgent next to the folder of the
 * DLL, together with the product's SOAP namespace and action address. Writes nothing to the trace log.
 * @param server  its address; null removes the two servers
 * @retval KE_NO_MODULE_DIRECTORY  the directory of KELUtils.dll is unknown
 * @retval KE_STORE_UNUSABLE       a write failed; all were tried
 */
KE_RESULT KE_API KE_SetURLSecureServer(const char* server);

/** Stores the server address in the configuration of the agent module, KELAGAPI.dll, which is bound for the call.
 * @param server  its address, cut at 511 characters
 * @retval KE_MISSING_ARGUMENT    server is null; nothing was bound
 * @retval KE_AGENT_NOT_LOADED    the agent module could not be loaded, or lacks a required function
 * @retval KE_AGENT_READ_FAILED   the agent module refused to return its configuration record
 * @retval KE_AGENT_WRITE_FAILED  the agent module refused the changed record
 */
KE_RESULT KE_API KE_SetURLServer(const char* server);

/** Updates the configuration files of an installed product to the current layout: message types, event settings, module
 * tokens, settings of update, upgrade and policies. The folders of the product must exist.
 *
 * A message type that exists keeps its number and action. The sections of the actions CheckPolicy, CheckPolicyRealTime
 * and CheckPolicyInstall are updated on every run: their flags are written, and a missing server is copied.
 * @param installDir  the folder of the product, a full path, cut at 511 characters; one trailing backslash is ignored
 * @retval KE_MISSING_ARGUMENT  installDir is null, empty or a single backslash; nothing was changed
 * @retval KE_STORE_UNUSABLE    a write failed, other than of message retries, ReloadFromFile and UserAllowedReboot. In
 *                              the list of optional files the first failed write ends the list; all other steps run
 */
KE_RESULT KE_API KE_UpgradeStart(const char* installDir);

/** @} */

/** @defgroup ke_events Events
 *
 * Events of the machine for the event module, TvEvAPI.dll. It is loaded from the folder KELTVEVT next to the folder of
 * the DLL, queues the event, and is freed. Texts are passed to it unchanged, null ones too.
 *
 * Threads: each call binds the module for itself; calls may run at the same time. KE_InitEventSystem() uses the
 * launcher: see the launcher operations.
 *
 * @section ke_sends Results of reporting events
 * - KE_EVENTS_UNAVAILABLE: the event module could not be loaded, or lacks a function
 * - KE_EVENT_NOT_SENT: the event module refused the connection or the event
 * @{ */

/** Reports the state of a scan, with the current time (UTC).
 * @param product  that scans
 * @param taskId   of the scan
 * @param status   of the scan, passed unchanged
 * @return @ref ke_sends
 */
KE_RESULT KE_API KE_ScanStateEvent(const char* product, const char* taskId, int32_t status);

/** Reports a forced restart of the computer.
 * @param product  that forces it
 * @return @ref ke_sends
 */
KE_RESULT KE_API KE_RebootForcedEvent(const char* product);

/** Reports that the agent is about to be uninstalled. First the action of the upgrade module runs; its result is
 * ignored. Then the event is sent; if a connection was opened, the call waits another 30 seconds for its delivery.
 * Finally, whatever the result, the agent's shutdown script is removed from the local group policy of the machine,
 * which requires administrator rights; a failure of that is ignored.
 * @param product  that is uninstalled
 * @return @ref ke_sends
 */
KE_RESULT KE_API KE_Uninstall(const char* product);

/** Reports an error of the agent, with the description that KE_GetEventDescription() returns. Without a description no
 * event is sent.
 * @param eventClass,source  passed unchanged
 * @param errorCode          number of the error and of its description
 * @param insertText         replaces "%s" in the description; may be null
 * @return @ref ke_sends; also:
 * @retval KE_MODULE_NOT_LOADED  KePIRes.exe, which holds the descriptions, could not be loaded
 * @retval KE_EVENT_NOT_SENT     the error has no description
 */
KE_RESULT KE_API KE_GenerateEvent(uint32_t eventClass, uint32_t source, uint32_t errorCode, const char* insertText);

/** Copies the description of an error, a string resource of KePIRes.exe in the folder KESAgent next to the folder of
 * the DLL. In a description that contains "%s", insertText replaces the first one, and "%%" becomes one percent sign. A
 * description is cut at 511 characters and at the end of the buffer, with KE_SUCCESS.
 * @param errorCode    number of the error
 * @param[out] buffer  receives the description
 * @param bufferSize   size of buffer
 * @param insertText   replaces the first "%s"; null is the empty text
 * @retval KE_MISSING_ARGUMENT   buffer is null
 * @retval KE_BUFFER_TOO_SMALL   bufferSize is not positive
 * @retval KE_MODULE_NOT_LOADED  KePIRes.exe could not be loaded
 * @retval KE_EVENT_NOT_SENT     the error has no description
 */
KE_RESULT KE_API KE_GetEventDescription(uint32_t errorCode, char* buffer, int32_t bufferSize, const char* insertText);

/** Makes the launcher, KELMNAPI.dll from the folder Common, start the event service by the command "KELTVEVT -start".
 *
 * Threads: see the launcher operations.
 * @retval KE_EVENTS_UNAVAILABLE  the launcher could not be loaded, or could not run the command, or the command ended
 *                                with an exit code other than 0
 */
KE_RESULT KE_API KE_InitEventSystem(void);

/** @} */

/** @defgroup ke_prompts Prompts
 *
 * Questions to the user by the program KePIRes.exe, in the folder KESAgent next to the folder of the DLL.
 *
 * Threads: questions and countdown wait for the end of the program, without a limit. Call them on a thread that may
 * block. Any number of threads may wait at the same time.
 *
 * @section ke_shows Results of prompts
 * - KE_MISSING_ARGUMENT: canReboot is null
 * - KE_NOT_CREATED: waiting for the program, or reading its exit code, failed
 * - KE_PROGRAM_NOT_STARTED: KePIRes.exe is missing or could not be started, or the directory of KELUtils.dll is unknown
 * - KE_PROMPT_FAILED: the program ended with an unexpected exit code
 * @{ */

/** Asks whether the computer may be restarted now, and waits for the answer.
 * @param[out] canReboot  receives the exit code of the program: 0, 1 or 2, as the program defines them. Set to 0 before
 *                        anything else
 * @return @ref ke_shows
 */
KE_RESULT KE_API KE_GetCanReboot(uint32_t* canReboot);

/** Does the same as KE_GetCanReboot().
 * @param[out] canReboot  as for KE_GetCanReboot()
 * @param unused          not used
 * @return @ref ke_shows
 */
KE_RESULT KE_API KE_GetCanRebootEx(uint32_t* canReboot, uint32_t unused);

/** Asks a question of any kind, and waits for the answer.
 * @param[out] canReboot  as for KE_GetCanReboot()
 * @param msgType         kind of the question, passed to the program unchanged: 1 asks about a restart
 * @param seconds         how long the question stays, in seconds; passed to the program unchanged
 * @return @ref ke_shows
 */
KE_RESULT KE_API KE_GetUserResponse(uint32_t* canReboot, int32_t msgType, int32_t seconds);

/** Shows the countdown to a restart, and waits for its end. Only the exit code 0 is expected.
 * @param seconds  length of the countdown, in seconds; passed to the program unchanged
 * @return @ref ke_shows, but never KE_MISSING_ARGUMENT
 */
KE_RESULT KE_API KE_ShowRebootCountDown(int32_t seconds);

/** Shows the installation dialog, and does not wait for it.
 * @return KE_SUCCESS, also after a failure, which is traced
 */
KE_RESULT KE_API KE_ShowInstallDialog(void);

/** Shows the installation dialog, and does not wait for it.
 * @param rebootMsg  number of the dialog's message about a restart, passed to the program unchanged;
 *                   KE_ShowInstallDialog() passes 0
 * @retval KE_PROGRAM_NOT_STARTED  KePIRes.exe is missing or could not be started, or the directory of KELUtils.dll is
 *                                 unknown
 */
KE_RESULT KE_API KE_ShowInstallDialogEx(uint32_t rebootMsg);

/** Closes the installation dialog, by the event `Global\KePIRes_InstallEvent`.
 * @retval KE_SUCCESS  always, also without a dialog
 */
KE_RESULT KE_API KE_HideInstallDialog(void);

/** Closes the window of the installation guide, if it exists, and moves the installation state forward to 47. Does so
 * only in a state from 40 to 47, or when the state cannot be read.
 * @return KE_SUCCESS, also when the state could not be stored
 */
KE_RESULT KE_API KE_HideInstalationGuide(void);

/** @} */

/** @defgroup ke_machine Machine identity
 *
 * The identity of the machine.
 * @{ */

/** Copies the hardware UUID of the machine, as Windows Management Instrumentation reports it: 36 characters, such as
 * "4C4C4544-0042-3510-8054-B4C04F4A3132". CheckUUID=false (lower case) in the section UUID of KELUTILS.INI, next to the
 * DLL, disables the query: the UUID is then the empty text.
 *
 * Threads: initialises COM on the calling thread for the call, apartment-threaded, and sets the security of COM for the
 * process unless it is set. Fails on a thread that uses COM multithreaded.
 * @param[out] buffer  receives the UUID, cut to the size. Stays unchanged when the machine reports none, with
 *                     KE_SUCCESS: initialise it
 * @param bufferSize   size of buffer, 37 for a complete UUID
 * @retval KE_MISSING_ARGUMENT  buffer is null
 * @retval KE_BUFFER_TOO_SMALL  bufferSize is not positive
 * @retval KE_NOT_CREATED       a step of the query failed, for example because the thread uses COM multithreaded
 */
KE_RESULT KE_API KE_GetUUID(char* buffer, int32_t bufferSize);

/** @} */

/* The function types, written from the declarations above by tools/interface. */
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
typedef KE_RESULT(KE_API* KE_SetCertificate_t)(const char* text);
typedef KE_RESULT(KE_API* KE_SetDeviceID_t)(const char* text);
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
