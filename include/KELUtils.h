/* KELUtils: the exported interface.
 *
 * KELUtils.dll is a 32-bit DLL. Every export is a plain C function with the standard Windows calling convention and an
 * undecorated name.
 *
 * Texts are zero-terminated strings of 8-bit characters in the system's code page. Text arguments are only read, and
 * only during the call. A text getter takes the caller's buffer and its size in bytes; it never writes past that size
 * and copies a value only when the size is greater than the value's length, so that the terminating zero fits.
 *
 * Threads: every export may be called from any thread. The store accessors below may run at the same time; each one
 * sees or leaves a whole value.
 *
 * Every export that returns a KE_RESULT may also return, besides the codes it lists:
 *   KE_EXCEPTION   an unexpected failure, such as memory running out, was caught inside.
 */
#ifndef KELUTILS_H
#define KELUTILS_H

#include <stdint.h>

#ifdef _WIN32
#define KE_API __stdcall
#else
#define KE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Result of an export: KE_SUCCESS or one of the codes below. */
typedef uint32_t KE_RESULT;

enum {
  KE_SUCCESS = 0,
  KE_MISSING_ARGUMENT = 1777,      /* a required argument is null or empty, or an output pointer is null */
  KE_BUFFER_TOO_SMALL = 1778,      /* the buffer's size is not greater than the value's length, or not positive */
  KE_NOT_CREATED = 1779,           /* an entry or buffer could not be created; a wait or exit-code read failed */
  KE_EXCEPTION = 1780,             /* an exception was caught inside the export */
  KE_NO_MODULE_DIRECTORY = 1781,   /* the directory of KELUtils.dll is unknown */
  KE_STORE_UNUSABLE = 1782,        /* a store or settings file cannot be opened or written, or the value is missing */
  KE_CRYPTO_NOT_LOADED = 1783,     /* the crypto module could not be loaded */
  KE_CRYPTO_FAILED = 1784,         /* enciphering, deciphering or an enciphered-file operation failed */
  KE_BAD_SCHEDULER_COMMAND = 1785, /* a scheduler command has no blank after the program name */
  KE_SCHEDULER_NOT_STARTED = 1786, /* the scheduler could not be started */
  KE_SCHEDULER_FAILED = 1787,      /* the scheduler returned a non-zero exit code */
  KE_SCHEDULER_TIMEOUT = 1788,     /* the scheduler did not finish within 90 seconds */
  KE_OUT_OF_RANGE = 1789,          /* an argument is out of range */
  KE_AGENT_NOT_LOADED = 1790,      /* the agent module's configuration functions are not bound: not loadable */
  KE_AGENT_INCOMPLETE = 1791,      /* the agent module's configuration functions are not bound: some are missing */
  KE_AGENT_READ_FAILED = 1792,     /* reading an agent configuration record failed */
  KE_AGENT_WRITE_FAILED = 1793,    /* writing an agent configuration record failed */
  KE_INSTALLER_PLUGIN_UNUSABLE = 1794,  /* the installer plug-in is not usable */
  KE_INSTALL_HELPER_NOT_STARTED = 1796, /* the installer helper could not be started */
  KE_PROGRAM_NOT_STARTED = 1797,        /* a program could not be started, or the launcher's Run failed */
  KE_PROMPT_FAILED = 1798,              /* the prompt program ended with an unexpected exit code */
  KE_LAUNCHER_NOT_LOADED = 1799,        /* the launcher module could not be loaded */
  KE_REGISTRY_UNUSABLE = 1800,          /* a proxy record write failed; the plug-in registry key could not be opened */
  KE_MODULE_NOT_LOADED = 1801,          /* an action module, plug-in or the prompt program could not be loaded */
  KE_EVENTS_UNAVAILABLE = 1802,         /* the event module is unavailable */
  KE_EVENT_NOT_SENT = 1803,             /* an event was not sent, or has no description */
  KE_UPDATE_FAILED_1566 = 1804,         /* the launcher's update exit code 1566 */
  KE_UPDATE_FAILED_1558 = 1805,         /* the launcher's update exit code 1558 */
  KE_UPDATE_FAILED_1565 = 1806,         /* the launcher's update exit code 1565 */
  KE_UPDATE_FAILED_5000 = 1807,         /* the launcher's update exit code 5000 */
  KE_UPDATE_FAILED_1567 = 1808          /* the launcher's update exit code 1567 */
};

/* A proxy: where it is, and who may use it. */
typedef struct KE_PROXY {
  char host[256];
  int32_t port;
  uint8_t hasCredentials; /* 1 when user and password count, else 0 */
  char user[256];
  char password[256];
} KE_PROXY;

/* ---- Store accessors
 * --------------------
 * The identity and state of the agent live in INTEGRA.DAT, in the KESAgent folder beside the DLL's own folder. Every
 * accessor below first makes the cached copy current and may therefore return:
 *   KE_NO_MODULE_DIRECTORY  the DLL's directory is unknown
 *   KE_STORE_UNUSABLE       the file can be neither opened, read nor created
 *   KE_CRYPTO_NOT_LOADED    the file is enciphered and ApiCr.dll could not be loaded from the DLL's directory
 *   KE_CRYPTO_FAILED        the file could not be deciphered; a setter: it could not be enciphered, and its text was
 *                           written plain
 *   KE_NOT_CREATED          setters: the entry could not be created
 * When the read fails, every output stays as it was, unless its export says otherwise. */

/* Agent, customer and certificate: buffer and size in bytes.
 * A missing or empty value is looked for in INTEGRA.BAK and then INTEGRA.START, which replace INTEGRA.DAT on the way.
 *   KE_MISSING_ARGUMENT  buffer is null
 *   KE_BUFFER_TOO_SMALL  size is not greater than the value's length; the buffer stays as it was
 *   KE_STORE_UNUSABLE    no copy of the store holds a value; the buffer stays as it was */
KE_RESULT KE_API KE_GetAgentID(char* buffer, int32_t size);
KE_RESULT KE_API KE_GetCustomerId(char* buffer, int32_t size);
KE_RESULT KE_API KE_GetCertificate(char* buffer, int32_t size);

/* Device identifier, remote-control user and remote-control password (the enciphered text as stored): buffer and size
 * in bytes.
 *   KE_MISSING_ARGUMENT  buffer is null
 *   KE_BUFFER_TOO_SMALL  size is not positive, or not greater than the value's length; the buffer stays as it was
 *   KE_STORE_UNUSABLE    the value is missing or empty; the buffer is set to the empty text */
KE_RESULT KE_API KE_GetDeviceID(char* buffer, int32_t size);
KE_RESULT KE_API KE_GetUserRCM(char* buffer, int32_t size);
KE_RESULT KE_API KE_GetPasswordRCM(char* buffer, int32_t size);

/* Agent version, server date and container: buffer and size in bytes. A missing value is the empty text and a success.
 *   KE_MISSING_ARGUMENT  buffer is null
 *   KE_BUFFER_TOO_SMALL  size is not greater than the value's length; the buffer stays as it was */
KE_RESULT KE_API KE_GetAgentVersion(char* buffer, int32_t size);
KE_RESULT KE_API KE_GetServerDate(char* buffer, int32_t size);
KE_RESULT KE_API KE_GetContainer(char* buffer, int32_t size);

/* Parameter text of the last installation error: as KE_GetContainer, but a size that is not positive is
 * KE_MISSING_ARGUMENT. */
KE_RESULT KE_API KE_GetLastErrorParam(char* buffer, int32_t size);

/* Installation state and last installation error: the stored decimal number, 0 when there is none.
 *   KE_MISSING_ARGUMENT  value is null */
KE_RESULT KE_API KE_GetInstallState(int32_t* value);
KE_RESULT KE_API KE_GetLastInstallError(int32_t* value);

/* 1 when the installation state is 200 or more, else 0. Set to 0 before anything is read.
 *   KE_MISSING_ARGUMENT  value is null */
KE_RESULT KE_API KE_IsInstallComplete(int32_t* value);

/* 1 when the store holds both an integration date and a device identifier, else 0.
 *   KE_MISSING_ARGUMENT  value is null */
KE_RESULT KE_API KE_IsIntegrated(int32_t* value);

/* Setters of a text that must not be empty.
 *   KE_MISSING_ARGUMENT  text is null or empty; nothing was touched */
KE_RESULT KE_API KE_SetAgentID(const char* text);
KE_RESULT KE_API KE_SetAgentVersion(const char* text);
KE_RESULT KE_API KE_SetServerDate(const char* text);
KE_RESULT KE_API KE_SetContainer(const char* text);

/* Stores text under the given key of the section INTEGRATION, appending the key when it is new.
 *   KE_MISSING_ARGUMENT  key or text is null or empty; nothing was touched */
KE_RESULT KE_API KE_SetPropertyInIntegra(const char* key, const char* text);

/* Setters of a text that may be empty. Those of the device identifier and of the remote-control user and password then
 * tell the plug-ins, as KE_NotifyDeviceID does; what these answer is traced and is not the setter's result.
 *   KE_MISSING_ARGUMENT  text is null; nothing was touched */
KE_RESULT KE_API KE_SetCustomerId(const char* text);
KE_RESULT KE_API KE_SetDeviceID(const char* text);
KE_RESULT KE_API KE_SetCertificate(const char* text);
KE_RESULT KE_API KE_SetUserRCM(const char* text);
KE_RESULT KE_API KE_SetPasswordRCM(const char* text);

/* Parameter text of the last installation error: null or empty stores the empty text. */
KE_RESULT KE_API KE_SetLastErrorParam(const char* text);

/* Last installation error, stored in decimal.
 *   KE_MISSING_ARGUMENT  error is null; nothing was touched */
KE_RESULT KE_API KE_SetLastInstallError(const int32_t* error);

/* Installation state, stored in decimal. With a non-zero onlyForward a state that is not greater than the stored one is
 * left alone, which is a success.
 *   KE_MISSING_ARGUMENT  state is null; nothing was touched */
KE_RESULT KE_API KE_SetInstallState(const int32_t* state, int32_t onlyForward);

/* ---- Integration
 * ----------------
 * These too read the store first and may return the codes of the store accessors. */

/* A calendar time in its fields, as the C library's tm begins. */
typedef struct KE_TIME {
  int32_t seconds;
  int32_t minutes;
  int32_t hours;
  int32_t day;   /* of the month, from 1 */
  int32_t month; /* 0 to 11 */
  int32_t year;  /* years since 1900 */
} KE_TIME;

/* Stores the integration date, as "2024-03-05 07:08:09". The fields are not checked.
 *   KE_MISSING_ARGUMENT  time is null; nothing was touched */
KE_RESULT KE_API KE_Integrate(const KE_TIME* time);

/* Empties the integration date and the device identifier; the entries stay. Without them it writes nothing.
 *   KE_STORE_UNUSABLE  neither change could be written; a single failed write is a success */
KE_RESULT KE_API KE_DeIntegrate(void);

/* ---- Enciphered settings
 * ------------------------
 * A setting text is the base64 form of a setting enciphered by ApiCr.dll, which is loaded from the DLL's directory:
 * lines of 76 characters parted by CR LF. It may be stored as a password of the store, on one line too. */

/* Enciphers the first textLength characters of text, or all of it when it is shorter. output receives the setting text
 * without a terminating zero, *outputSize its length; on entry *outputSize is the size of output in characters. Ask for
 * the size with a null output:
 *
 *   int32_t size = 0;
 *   if (KE_EncryptSetting(text, length, NULL, &size) == KE_BUFFER_TOO_SMALL) {
 *     char* output = malloc(size + 1);
 *     if (output && KE_EncryptSetting(text, length, output, &size) == KE_SUCCESS) output[size] = '\0';
 *     ...
 *
 * A setting may have 253 characters, and 254 bytes in UTF-8. A longer one, and a negative textLength, is enciphered as
 * the empty setting, with KE_SUCCESS.
 *   KE_MISSING_ARGUMENT   text or outputSize is null
 *   KE_BUFFER_TOO_SMALL   output is null: *outputSize is the required size, a little more than the length of the text.
 *                         Or *outputSize is smaller than that: nothing was written, and *outputSize stays as it was
 *   KE_CRYPTO_NOT_LOADED  ApiCr.dll could not be loaded (found before null arguments are)
 *   else the error of the crypto module, as it stands */
KE_RESULT KE_API KE_EncryptSetting(const char* text, int32_t textLength, char* output, int32_t* outputSize);

/* Replaces the setting text in buffer, which ends in a zero, by the plain setting in UTF-8. size is that of the buffer
 * in bytes; it must exceed the length of the enciphered block by more than 1, however short the setting is. The length
 * of the setting text always does. Characters that are not base64 are skipped.
 *   KE_MISSING_ARGUMENT   buffer is null
 *   KE_BUFFER_TOO_SMALL   size is too small; the buffer stays as it was
 *   KE_NOT_CREATED        no memory for the deciphered setting
 *   KE_CRYPTO_NOT_LOADED  ApiCr.dll could not be loaded (found before a null buffer is)
 *   else the error of the crypto module, as it stands; the buffer stays as it was */
KE_RESULT KE_API KE_DecryptSetting(char* buffer, int32_t size);

/* The remote-control password, deciphered: buffer and size in bytes, which must be as KE_DecryptSetting says. A text
 * that cannot be deciphered is not told: the buffer then holds what its base64 form stands for. Reads the store and may
 * return the codes of the store accessors.
 *   KE_MISSING_ARGUMENT  buffer is null
 *   KE_BUFFER_TOO_SMALL  size is not positive or too small; the buffer stays as it was
 *   KE_STORE_UNUSABLE    the password is missing or empty; the buffer is set to the empty text
 *   KE_NOT_CREATED       no memory for the deciphered password */
KE_RESULT KE_API KE_GetPasswordRCMDec(char* buffer, int32_t size);

/* ---- Enciphered value files
 * ---------------------------
 * An INI file that is enciphered as a whole, with ApiCr.dll from the Common folder of the product's install path. Plain
 * INI files are read too. A missing file is created empty. Section and key are cut at 255 characters. The caller keeps
 * other writers of the same file away. */

/* A value of the file: buffer and its size in bytes.
 *   KE_MISSING_ARGUMENT  section, key, buffer or filePath is null, or filePath is empty
 *   KE_BUFFER_TOO_SMALL  size is not positive, or not greater than the value's length; the buffer stays as it was
 *   KE_NOT_CREATED       no memory
 *   KE_STORE_UNUSABLE    the value is missing or empty
 *   KE_CRYPTO_FAILED     the file could not be opened, created, read or deciphered */
KE_RESULT KE_API KE_GetEncryptedFileValue(const char* section, const char* key, char* buffer, int32_t size,
                                          const char* filePath);

/* Sets a value, which may be empty, and writes the file. Line breaks in it are left out. Without ApiCr.dll the file is
 * written plain, which is a success.
 *   KE_MISSING_ARGUMENT  section, key, value or filePath is null, or filePath is empty
 *   KE_NOT_CREATED       no memory
 *   KE_CRYPTO_FAILED     the file could not be opened, created, read or deciphered: it stays as it was. Or it could not
 *                        be opened for writing, or not enciphered: its text was then written plain */
KE_RESULT KE_API KE_SetEncryptedFileValue(const char* section, const char* key, const char* value,
                                          const char* filePath);

/* ---- Uninstall password
 * -----------------------
 * Stored as the text that was given, by convention a setting text. All read the store and may return the codes of the
 * store accessors. */

/* Stores the text; the empty text removes the password. reserved is not used.
 *   KE_MISSING_ARGUMENT  text is null; nothing was touched */
KE_RESULT KE_API KE_SetUninstallPass(const char* text, uint32_t reserved);

/* The password, deciphered: buffer and size in bytes, which must be as KE_DecryptSetting says. A text that cannot be
 * deciphered is not told, as in KE_GetPasswordRCMDec.
 *   KE_MISSING_ARGUMENT  buffer is null
 *   KE_BUFFER_TOO_SMALL  size is too small; the buffer stays as it was
 *   KE_STORE_UNUSABLE    the password is missing or empty; the buffer stays as it was
 *   KE_NOT_CREATED       no memory for the deciphered password */
KE_RESULT KE_API KE_GetUninstallPass(char* buffer, int32_t size);

/* The text as it is stored: buffer and size in bytes.
 *   KE_MISSING_ARGUMENT  buffer is null
 *   KE_BUFFER_TOO_SMALL  size is not greater than the text's length; the buffer stays as it was
 *   KE_STORE_UNUSABLE    the password is missing or empty; the buffer stays as it was */
KE_RESULT KE_API KE_GetUninstallPassEx(char* buffer, int32_t size);

/* 1 when the password is the uninstall password, byte for byte, else 0: also for a null or empty password, when none is
 * configured and when the store cannot be read. No result code. With a non-zero stored it is compared with the stored
 * text, else with the deciphered one. Passwords of more than 2047 characters never match. */
int32_t KE_API KE_CheckInstallationPassw(const char* password, int32_t stored);

/* 1 when an uninstall password is configured, else 0: also when the store cannot be read, and when the stored text has
 * more than 2047 characters. No result code. */
int32_t KE_API KE_IsNeededInstallationPassw(void);

/* ---- Launcher operations
 * ------------------------
 * Work that is handed to the launcher module (KELMNAPI.dll, in the Common folder beside the DLL's own), to plug-ins and
 * to the installer helper. The launcher is bound once per process: callers keep its exports from running at the same
 * time. */

/* Has the launcher send the report. Always KE_SUCCESS; failures are traced. The launcher is also looked for in the
 * DLL's own directory. */
KE_RESULT KE_API KE_SendReport(void);

/* Has the launcher apply the local remote-control configuration. Always KE_SUCCESS; failures are traced. */
KE_RESULT KE_API KE_AplyLocalRCMCfg(void);

/* Has the launcher update the agent now. After a first update that ended well, it is told every 20 seconds to
 * continue, for as long as it answers that there is more to do (exit code 1559); the call blocks meanwhile. The result
 * is what the launcher returned to the first call.
 *   KE_LAUNCHER_NOT_LOADED  the launcher could not be loaded */
KE_RESULT KE_API KE_UpdateNow(void);

/* The same, with two values that are the launcher's business. The result is the exit code that ended the update, with
 * codes of this library for some:
 *   KE_UPDATE_FAILED_...    the exit codes 1566, 1558, 1565, 5000 and 1567
 *   KE_LAUNCHER_NOT_LOADED  the launcher could not be loaded
 *   else the exit code as it stands; without a positive one from the first call, what the launcher returned */
KE_RESULT KE_API KE_UpdateNowEx(uint32_t first, uint32_t second);

/* A value of the update settings, KesLpMng\UPDNW.DAT: as GetPrivateProfileString reads it into buffer (bufferSize in
 * bytes), def when it is missing. A null buffer or a size of 0 reads nothing. Always KE_SUCCESS. */
KE_RESULT KE_API KE_GetUpdateNowConfig(const char* section, const char* key, const char* def, char* buffer,
                                       uint32_t bufferSize);

/* Sets a value of the update settings, as WritePrivateProfileString does: a null value removes the key, a null key the
 * section. With a non-zero onlyIfExists a missing file is not created. Always KE_SUCCESS. */
KE_RESULT KE_API KE_SetUpdateNowConfig(const char* section, const char* key, const char* value, uint32_t onlyIfExists);

/* Whether the agent may be installed beside other products: stored in decimal in KelUpg\KelUpg.ini. A failed write is
 * not told.
 *   KE_NOT_CREATED  the DLL's directory is unknown */
KE_RESULT KE_API KE_SetNoCheckAVValue(int32_t value);

/* Tells the stored device identifier to the plug-ins: to both (target 0), to the installer plug-in (1) or to the
 * remote-control plug-in (2). May also return the codes of KE_GetDeviceID; identifiers have up to 37 characters.
 *   KE_MISSING_ARGUMENT           target is none of these
 *   KE_INSTALLER_PLUGIN_UNUSABLE  the installer plug-in has no path, or cannot be loaded or initialised
 *   KE_MODULE_NOT_LOADED          the same for the remote-control plug-in
 *   else what the plug-in returned; of two failures the installer plug-in's */
KE_RESULT KE_API KE_NotifyDeviceID(int32_t target);

/* Starts the installer helper, KepWInst.exe, from its own folder or from the DLL's directory, and does not wait for it.
 *   KE_INSTALL_HELPER_NOT_STARTED  it could not be started */
KE_RESULT KE_API KE_LaunchKEPWInst(void);

/* ---- Scheduling
 * ---------------
 * Jobs are kept by the scheduler, the program zumat in the folder Scheduler beside the DLL's own folder, or in the
 * DLL's own. Each export runs it with one or more command lines, of at most 8198 characters each, and waits for it: up
 * to 90 seconds per command. Nothing is repeated, and nothing undone. Unless said otherwise they may return:
 *   KE_SCHEDULER_NOT_STARTED  the scheduler is missing or no program, or the DLL's directory is unknown
 *   KE_SCHEDULER_FAILED       it ended with an exit code other than 0
 *   KE_SCHEDULER_TIMEOUT      it did not end in time, and was left running
 *
 * A job names the program that the scheduler starts, such as "KEPLPMNG", the module that runs under it and the module's
 * arguments; null texts are empty. Its task ID names it for later changes. No text may contain a double quote. */

/* A job at a fixed day and time, both in the scheduler's own notation. It is added, never changed.
 *   KE_MISSING_ARGUMENT  module is null or empty
 *   KE_OUT_OF_RANGE      startDay or startTime is null, or taskId is below 1 */
KE_RESULT KE_API KE_SetTask(const char* program, const char* module, const char* arguments, int32_t taskId,
                            const char* startDay, const char* startTime);

/* A periodic job, created or redefined. Periods of a week or more, and of a day or more, are cut to whole weeks or days;
 * a shorter one runs on all days or, with a non-zero randomWeekday, on one from Monday to Friday that is drawn. Then the
 * boot jobs of the module are activated.
 *   KE_OUT_OF_RANGE      periodMinutes or taskId is below 1
 *   KE_MISSING_ARGUMENT  module is null or empty; the job is written all the same */
KE_RESULT KE_API KE_SetPeriodicTask(const char* program, const char* module, const char* arguments, int32_t taskId,
                                    int32_t periodMinutes, int32_t randomWeekday);

/* A periodic job of the plug-in manager that starts within a window of the day, in minutes since midnight, which is
 * brought between 00:29 and 23:59. Then the boot jobs of the module are deactivated.
 *   KE_MISSING_ARGUMENT  module is null or empty
 *   KE_OUT_OF_RANGE      periodMinutes or taskId is below 1, a minute is negative, or endMinute is before startMinute */
KE_RESULT KE_API KE_SetPeriodicTaskEx(const char* module, const char* arguments, int32_t taskId, int32_t periodMinutes,
                                      int32_t startMinute, int32_t endMinute, int32_t randomWeekday);

/* The same with a recurrence in the scheduler's own notation, periodicData, in place of the period, which is only
 * checked. A window of which one end is 0 is left out. Codes as above. */
KE_RESULT KE_API KE_SetPeriodicTaskRangeDate(const char* module, const char* arguments, int32_t taskId,
                                             int32_t periodMinutes, int32_t startMinute, int32_t endMinute,
                                             const char* periodicData);

/* Has the plug-in manager run a command once, delaySeconds after the next boot. *result is set to 0 and means nothing.
 *   KE_OUT_OF_RANGE           command is null or empty, delaySeconds is negative, or result is null; *result stays
 *   KE_SCHEDULER_NOT_STARTED  any failure of the scheduler */
KE_RESULT KE_API KE_ScheduleTaskReboot(const char* command, int32_t delaySeconds, uint32_t* result);

/* Does nothing; KE_SUCCESS. */
KE_RESULT KE_API KE_RemoveScheduleTaskReboot(uint32_t unused);

/* Schedules all jobs of the agent, other ones for an integrated computer than for one that is not, and starts the
 * installer helper. 21 commands, or 23 on an integrated computer. The last failure counts.
 *   KE_INSTALL_HELPER_NOT_STARTED  the installer helper could not be started */
KE_RESULT KE_API KE_ScheduleDefaultTasks(void);

/* Completes an upgrade: on a computer that is not integrated runs the integration test and waits for it, up to three
 * minutes; schedules the jobs anew; stores the version when resultCode, that of the platform's installer, is 0 or 3010;
 * has the plug-in manager do the rest; keeps the store as its own start copy. Only the storing of the version and the
 * start of the plug-in manager can fail; the scheduler's failures are traced.
 *   KE_PROGRAM_NOT_STARTED  the plug-in manager could not be started
 *   else the codes of KE_SetAgentVersion */
KE_RESULT KE_API KE_UpgradeComplete(uint32_t resultCode, const char* version);

/* Has the plug-in manager complete the upgrade, and does not wait for it. Its arguments are cut at 1023 characters.
 *   KE_PROGRAM_NOT_STARTED  the plug-in manager could not be started */
KE_RESULT KE_API KE_ScheduleUpgradeComplete(int32_t resultCode, const char* version);

/* ---- Proxy
 * ----------
 * How the agent reaches its server. The settings are records of the agent module KELAGAPI.dll, which is loaded from the
 * Common folder, else from the DLL's own directory, and freed again. Every export below may return:
 *   KE_AGENT_NOT_LOADED  the module could not be loaded
 *   KE_AGENT_INCOMPLETE  the module lacks a function
 * A proxy's user and password are the bytes of the record, which KE_SetAgentProxyInfo stores in UTF-8. */

/* The proxy in use; when there is none, the stored one. Host and port are filled only from an address with a ":": the
 * host is what stands before the first one, the port the decimal number behind it, 0 when there is none. Nothing
 * stored is a success too.
 *   KE_MISSING_ARGUMENT   proxy is null
 *   KE_AGENT_READ_FAILED  a record could not be read; the proxy is cleared
 *   with any other code but KE_EXCEPTION the proxy stays as it was */
KE_RESULT KE_API KE_GetConfiguratedProxy(KE_PROXY* proxy);

/* Stores the proxy and puts it in use. An empty port means 80. user and password are setting texts of at most 1023
 * characters; an empty one is not stored, and without a user there is no password either. Server with port is cut at
 * 255 characters, the deciphered user and password at 127 bytes each. The arguments are traced as they are given.
 *   KE_MISSING_ARGUMENT     server, port, user or password is null, or server is empty
 *   KE_NO_MODULE_DIRECTORY  the DLL's directory is unknown
 *   KE_OUT_OF_RANGE         user or password is too long
 *   KE_REGISTRY_UNUSABLE    the agent module could not store the record
 *   else the code of KE_DecryptSetting for user or password; with any of them nothing was stored */
KE_RESULT KE_API KE_SetAgentProxyInfo(const char* server, const char* port, const char* user, const char* password);

/* Stores the static proxy: a host name, cut at 255 characters, and a list of addresses, cut at 319. Either may be null
 * or empty; without both the static proxy is switched off.
 *   KE_AGENT_WRITE_FAILED  the agent module could not store the record */
KE_RESULT KE_API KE_SetStaticProxyInfo(const char* host, const char* ips);

/* The proxy to use on the internet, as the installer plug-in tells: proxy and size are handed to it as they are, and
 * its answer is the result. The plug-in's path is in KelUpg.ini, section PLUGINS, key KEC. When it is not usable, the
 * agent module is asked: the host is then the address up to its first ":", the port the number behind that, 80 when it
 * is missing or 0. size is that of proxy in bytes.
 *   KE_MISSING_ARGUMENT   proxy is null
 * without a usable plug-in:
 *   KE_BUFFER_TOO_SMALL   size does not cover all fields of a KE_PROXY
 *   KE_NOT_CREATED        the agent module could not find out the proxy
 *   KE_AGENT_READ_FAILED  the agent module could not hand out the proxy
 *   with any of them the proxy stays as it was */
KE_RESULT KE_API KE_GetInetConfig(KE_PROXY* proxy, uint32_t size);

/* ---- Registration
 * -----------------
 * What the agent's programs find each other by: INI files of the modules that host plug-ins, and the token files of the
 * plug-in manager, the scheduler and the watchdog. Nothing is cached: every call edits the files, and what it did before
 * it failed stays. Keys, values and types go to the platform's profile functions as they are given. The exports for
 * plug-ins, versions and subscriptions work on folders beside the DLL's own, and may return:
 *   KE_NO_MODULE_DIRECTORY  the DLL's directory is unknown
 *   KE_STORE_UNUSABLE       the platform reports that a write or a removal failed, as it does for a missing folder */

/* Writes all registration files of an installation below its folder root, a full path whose one trailing backslash does
 * not count: the token files, then the standard plug-ins of the configuration, update and upgrade module. Creates the
 * folders for them, but not root. Before that, whatever root is, every protection plug-in in the registry is asked to
 * register itself anew. Stops at the first file that fails. Repeating it leaves the same files. Never from two threads
 * at once.
 *   KE_MISSING_ARGUMENT  root is null, empty or a lone backslash
 *   KE_STORE_UNUSABLE    a token file could not be opened, or a value of an INI file not be written */
KE_RESULT KE_API KE_InitializeSystem(const char* root);

/* The same for an installation that ends with a reboot: when rebootRequired is "TRUE" in any letter case, the upgrade
 * module's file, beside the DLL's own folder, first receives that text as REBOOT_REQUIRED; whether it could be written
 * does not count. Any other text, and null, writes nothing.
 *   KE_MISSING_ARGUMENT, KE_STORE_UNUSABLE  as KE_InitializeSystem */
KE_RESULT KE_API KE_InitializeSystemEx(const char* root, const char* rebootRequired);

/* Enters a plug-in, by key and value, into the file of the module that hosts it: host\host.ini. A null value takes the
 * key out.
 *   KE_MISSING_ARGUMENT  key or host is null or empty */
KE_RESULT KE_API KE_AddPlugin(const char* key, const char* host, const char* value);

/* Takes a plug-in out of its host's file. For the host KELUpg, in any letter case, the file then says that the
 * component is not installed. For the host KELUpd the launcher KELMNAPI.dll, from the Common folder, runs the command
 * "KELUPD -REMOVEINFO:" with the key; callers let no other export use the launcher meanwhile.
 *   KE_MISSING_ARGUMENT     key or host is null or empty
 *   KE_LAUNCHER_NOT_LOADED  KELUpd: the launcher could not be loaded
 *   KE_PROGRAM_NOT_STARTED  KELUpd: the launcher could not run the command
 *   KE_STORE_UNUSABLE       also: KELUpd: the command ended with another exit code than 0 */
KE_RESULT KE_API KE_RemovePlugin(const char* key, const char* host);

/* Records the installed version of a component in the upgrade module's file. For the component KEAGENT, in any letter
 * case, the action of the upgrade module runs afterwards; its result does not count.
 *   KE_MISSING_ARGUMENT  key or version is null or empty */
KE_RESULT KE_API KE_SetVersion(const char* key, const char* version);

/* Subscribe a plug-in to a policy type, or withdraw it, in the configuration module's file. The console's plug-in, KEC
 * in just these letters, displaces the configuration module's own, KELSYSCF, when it comes, and hands the type back
 * when it goes.
 *   KE_MISSING_ARGUMENT  key or type is null or empty */
KE_RESULT KE_API KE_AddPolicyTypeSuscription(const char* key, const char* type);
KE_RESULT KE_API KE_RemovePolicyTypeSuscription(const char* key, const char* type);

/* 1 when the command, such as "KELUpd" in any letter case, may run in the present installation state, else 0. In a
 * complete installation every command may, also a null one. Set to 0 before anything is read. Reads the store and may
 * return the codes of the store accessors.
 *   KE_MISSING_ARGUMENT  allowed is null */
KE_RESULT KE_API KE_CanRunCommand(const char* command, uint32_t* allowed);

/* ---- Server endpoints
 * ---------------------
 * Which message goes to which SOAP action, and to which server, stands in the plain INI file KE_AGPRX.dat in the
 * KESAgent folder of the product. These exports take no lock: the caller keeps other writers of the same files away. */

/* Sets the server of the two integration actions in KE_AGPRX.dat beside the DLL's own folder, and with it the SOAP
 * namespace and action address, which are those of the product. A null server removes the two servers. Writes nothing
 * to the trace log.
 *   KE_NO_MODULE_DIRECTORY  the DLL's directory is unknown
 *   KE_STORE_UNUSABLE       a write failed; all were tried */
KE_RESULT KE_API KE_SetURLSecureServer(const char* server);

/* Stores the server address in the configuration of the agent module, KELAGAPI.dll, which is bound for the call. The
 * address is cut at 511 characters.
 *   KE_MISSING_ARGUMENT    server is null; nothing was bound
 *   KE_AGENT_NOT_LOADED    the agent module could not be loaded, or lacks a function that is needed
 *   KE_AGENT_READ_FAILED   the agent module refused to give its configuration record
 *   KE_AGENT_WRITE_FAILED  the agent module refused the changed record */
KE_RESULT KE_API KE_SetURLServer(const char* server);

/* Brings the configuration files of the product installed in installDir up to the current layout: message types, event
 * settings, module tokens, settings of update, upgrade and policies. Message types that exist stay as they are. The
 * folders of the product must exist. The directory is cut at 511 characters; one trailing backslash is dropped.
 *   KE_MISSING_ARGUMENT  installDir is null, empty or a single backslash; nothing was touched
 *   KE_STORE_UNUSABLE    a file could not be written; everything else was still done */
KE_RESULT KE_API KE_UpgradeStart(const char* installDir);

/* ---- Events
 * -----------
 * What happens on the machine goes to the event module, TvEvAPI.dll, which is loaded from the folder KELTVEVT beside the
 * DLL's own folder, queues the event and is freed again. Texts go to it as they are, null ones too. Every export that
 * sends an event may return:
 *   KE_EVENTS_UNAVAILABLE  the event module could not be loaded, or lacks a function
 *   KE_EVENT_NOT_SENT      it refused the connection or the event */

/* The state of a scan, with the present time. */
KE_RESULT KE_API KE_ScanStateEvent(const char* product, const char* taskId, int32_t status);

/* A forced restart of the computer. */
KE_RESULT KE_API KE_RebootForcedEvent(const char* product);

/* The agent is about to be uninstalled. First the action of the upgrade module runs; its result does not count. Then the
 * event is sent; once a connection was opened, the call lasts 30 seconds more, so that the event can be delivered.
 * Whatever came of that, the agent's shutdown script is then removed from the machine's local group policy. */
KE_RESULT KE_API KE_Uninstall(const char* product);

/* An error of the agent, with the description that KE_GetEventDescription finds for errorCode and insertText. Class and
 * source are handed to the event module as they are. Without a description no event is sent:
 *   KE_MODULE_NOT_LOADED  KePIRes.exe could not be loaded
 *   KE_EVENT_NOT_SENT     it has no description of the error */
KE_RESULT KE_API KE_GenerateEvent(uint32_t eventClass, uint32_t source, uint32_t errorCode, const char* insertText);

/* The description of an error: buffer and size in bytes. It is a string resource of KePIRes.exe in the KESAgent folder
 * beside the DLL's own. In one that contains "%s", insertText takes the place of the first, nothing when it is null or
 * empty, and "%%" becomes one percent sign. A description has at most 511 characters; one that does not fit is cut, also
 * at the end of the buffer, and that is a success.
 *   KE_MISSING_ARGUMENT   buffer is null
 *   KE_BUFFER_TOO_SMALL   bufferSize is not positive
 *   KE_MODULE_NOT_LOADED  KePIRes.exe could not be loaded
 *   KE_EVENT_NOT_SENT     it has no description of the error
 *   with any of them the buffer stays as it was */
KE_RESULT KE_API KE_GetEventDescription(uint32_t errorCode, char* buffer, int32_t bufferSize, const char* insertText);

/* Has the launcher, KELMNAPI.dll from the Common folder, start the event service by the command "KELTVEVT -start".
 * Callers let no other export use the launcher meanwhile.
 *   KE_EVENTS_UNAVAILABLE  the launcher could not be loaded, or could not run the command, or this ended with another
 *                          exit code than 0 */
KE_RESULT KE_API KE_InitEventSystem(void);

/* ---- Prompts
 * ------------
 * The user is asked by the program KePIRes.exe, in the KESAgent folder beside the DLL's own folder. The questions and the
 * countdown wait for its end, however long it takes: a caller that must not block calls them on a thread of its own.
 * They, and KE_ShowInstallDialogEx, may return:
 *   KE_PROGRAM_NOT_STARTED  the program is missing or could not be started, or the DLL's directory is unknown
 * and those that wait:
 *   KE_NOT_CREATED          waiting for the program, or reading its exit code, failed
 *   KE_PROMPT_FAILED        the program ended with an exit code that is no answer */

/* Asks whether the computer may be restarted now. *canReboot is set to 0 before anything else and receives the answer,
 * the program's exit code: 0, 1 or 2. The second value of KE_GetCanRebootEx is not used.
 *   KE_MISSING_ARGUMENT  canReboot is null */
KE_RESULT KE_API KE_GetCanReboot(uint32_t* canReboot);
KE_RESULT KE_API KE_GetCanRebootEx(uint32_t* canReboot, uint32_t unused);

/* Asks a question of any kind (msgType), with a number of seconds; both are handed to the program as they are. The
 * answer is that of KE_GetCanReboot.
 *   KE_MISSING_ARGUMENT  canReboot is null */
KE_RESULT KE_API KE_GetUserResponse(uint32_t* canReboot, int32_t msgType, int32_t seconds);

/* Shows the countdown to a restart, of so many seconds, which are handed to the program as they are. Only the exit code
 * 0 is a success. */
KE_RESULT KE_API KE_ShowRebootCountDown(int32_t seconds);

/* Shows the installation dialog, and does not wait for it. rebootMsg is the number of its message about a restart, 0
 * for KE_ShowInstallDialog, which is always KE_SUCCESS. */
KE_RESULT KE_API KE_ShowInstallDialog(void);
KE_RESULT KE_API KE_ShowInstallDialogEx(uint32_t rebootMsg);

/* Closes the installation dialog, by the event Global\KePIRes_InstallEvent. Always KE_SUCCESS, also without a dialog. */
KE_RESULT KE_API KE_HideInstallDialog(void);

/* Closes the window of the installation guide, if there is one, and moves the installation state forward to 47. Does
 * this only in a state from 40 to 47, or when the state cannot be read. KE_SUCCESS, also when the state could not be
 * stored. */
KE_RESULT KE_API KE_HideInstalationGuide(void);

/* ---- Machine identity
 * --------------------- */

/* The hardware UUID of the machine, as Windows Management Instrumentation reports it: buffer and bufferSize in bytes. A
 * text that does not fit is cut, terminated and a success. The buffer stays as it was when the machine reports no UUID,
 * which is a success too, so preset it. KELUTILS.INI beside the DLL switches the query off with CheckUUID=false, in
 * small letters, in its section UUID: the UUID is then the empty text.
 *
 * COM is initialised on the calling thread for the call, apartment-threaded; the process gets its security settings
 * unless it has some already.
 *   KE_MISSING_ARGUMENT  buffer is null
 *   KE_BUFFER_TOO_SMALL  bufferSize is not positive
 *   KE_NOT_CREATED       a step of the query failed, for example because the thread uses COM multithreaded; the buffer
 *                        stays as it was */
KE_RESULT KE_API KE_GetUUID(char* buffer, int32_t bufferSize);

/* ---- Function types
 * -------------------
 * For programs that load the library at run time: the type of KE_Name is KE_Name_t.
 *
 *   KE_GetAgentID_t getAgentId = (KE_GetAgentID_t)(void (*)(void))GetProcAddress(module, "KE_GetAgentID");
 *
 * Written from the declarations above by cmake/WriteFunctionTypes.cmake. */
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

#ifdef __cplusplus
}
#endif

#endif
