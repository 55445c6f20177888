#include <windows.h>

#include <algorithm>
#include <iterator>

#include "errors.h"
#include "texts.h"

namespace kelctl {
namespace {

#define KELCTL_CODE(name, text, remedy) \
  { name, #name, text, remedy }

// As docs/operations.md has them.
constexpr ResultCode kResultCodes[] = {
    KELCTL_CODE(KE_SUCCESS, "success", "nothing"),
    KELCTL_CODE(KE_MISSING_ARGUMENT, "a required argument is missing or empty, or an output pointer is null",
                "correct the call; scheduling: the job has no module"),
    KELCTL_CODE(KE_BUFFER_TOO_SMALL, "the size is not greater than the value's length, or not positive",
                "use a larger buffer; expected from KE_EncryptSetting with a null output"),
    KELCTL_CODE(KE_NOT_CREATED, "out of memory; a wait or a WMI query failed; a settings file has no directory",
                "read the log; KE_GetUUID: check the WMI service and that the thread does not use multithreaded COM"),
    KELCTL_CODE(KE_EXCEPTION, "an exception was caught inside the export",
                "usually the host ran out of memory; else report it with kelctl diagnostics"),
    KELCTL_CODE(KE_NO_MODULE_DIRECTORY,
                "the directory of KELUtils.dll is unknown, or the code page cannot represent it",
                "install into a folder with characters of the code page"),
    KELCTL_CODE(KE_STORE_UNUSABLE, "a store or settings file cannot be opened or written, or a value is missing",
                "kelctl doctor; getter: the value was never stored or the store is damaged; setter: rights, full disk, "
                "a program that holds the file"),
    KELCTL_CODE(
        KE_CRYPTO_NOT_LOADED, "the crypto module could not be loaded",
        "put ApiCr.dll (32-bit, complete) next to KELUtils.dll, for value files into Common; the store is unchanged"),
    KELCTL_CODE(KE_CRYPTO_FAILED, "encryption or decryption failed; any failure of a value file",
                "kelctl doctor, and ApiCr.dll's log; value files: path, rights, install path. A store that could not "
                "be encrypted is now in plain text"),
    KELCTL_CODE(KE_BAD_SCHEDULER_COMMAND, "a scheduler command has no space after the program",
                "nothing: no export returns it"),
    KELCTL_CODE(KE_SCHEDULER_NOT_STARTED, "the scheduler could not be started; any failure of KE_ScheduleTaskReboot",
                "put zumat.exe into Scheduler"),
    KELCTL_CODE(KE_SCHEDULER_FAILED, "the scheduler's exit code is not 0",
                "see the log at level 20 and the scheduler's own"),
    KELCTL_CODE(KE_SCHEDULER_TIMEOUT, "the scheduler ran longer than 90 seconds",
                "it is still running: end it, schedule again"),
    KELCTL_CODE(KE_OUT_OF_RANGE, "an argument is out of range", "correct the call"),
    KELCTL_CODE(KE_AGENT_NOT_LOADED,
                "the agent module could not be loaded, or the one in the DLL's folder is incomplete",
                "put KELAGAPI.dll into Common"),
    KELCTL_CODE(KE_AGENT_INCOMPLETE, "the agent module in Common lacks a function",
                "replace KELAGAPI.dll; no restart is needed"),
    KELCTL_CODE(KE_AGENT_READ_FAILED, "the agent module could not read a record",
                "see its log; write the record again"),
    KELCTL_CODE(KE_AGENT_WRITE_FAILED, "the agent module could not write a record", "see its log: rights, full disk"),
    KELCTL_CODE(KE_INSTALLER_PLUGIN_UNUSABLE, "the installer plug-in has no full path or cannot be used",
                "check PLUGINS, KEC in KelUpg.ini"),
    KELCTL_CODE(KE_INSTALL_HELPER_NOT_STARTED, "the installer helper could not be started",
                "put KepWInst.exe into its folder"),
    KELCTL_CODE(KE_PROGRAM_NOT_STARTED, "a program could not be started, or the launcher could not run a command",
                "put the program into its folder; check that it fits the machine"),
    KELCTL_CODE(KE_PROMPT_FAILED, "the prompt program ended with an unexpected exit code",
                "nobody could be asked, for example without a desktop; see KePIRes.log"),
    KELCTL_CODE(KE_LAUNCHER_NOT_LOADED, "the launcher module could not be loaded, or another thread freed it",
                "put KELMNAPI.dll into Common; use one launcher export at a time"),
    KELCTL_CODE(KE_REGISTRY_UNUSABLE,
                "the agent's proxy record could not be written; inside the library a registry key",
                "see the agent module's log"),
    KELCTL_CODE(KE_MODULE_NOT_LOADED, "the remote-control plug-in or KePIRes.exe could not be loaded",
                "check PLUGINS, RCM in Kelconf.ini; put KePIRes.exe into KESAgent"),
    KELCTL_CODE(KE_EVENTS_UNAVAILABLE, "the event module or service is not available",
                "put TvEvAPI.dll into KELTVEVT; KE_InitEventSystem also needs the launcher"),
    KELCTL_CODE(KE_EVENT_NOT_SENT, "the event module refused, or the error has no description",
                "check that the event service runs, and that KePIRes.exe has the text"),
    KELCTL_CODE(KE_UPDATE_FAILED_1566, "the update's exit code 1566", "the update's own log"),
    KELCTL_CODE(KE_UPDATE_FAILED_1558, "the update's exit code 1558", "the update's own log"),
    KELCTL_CODE(KE_UPDATE_FAILED_1565, "the update's exit code 1565", "the update's own log"),
    KELCTL_CODE(KE_UPDATE_FAILED_5000, "the update's exit code 5000", "the update's own log"),
    KELCTL_CODE(KE_UPDATE_FAILED_1567, "the update's exit code 1567", "the update's own log"),
};

#undef KELCTL_CODE

}  // namespace

ResultCode FindResultCode(KE_RESULT code) {
  const auto* const row = std::ranges::find(kResultCodes, code, &ResultCode::code);
  return row != std::end(kResultCodes)
             ? *row
             : ResultCode{code, "(unnamed)", "a code this kelctl does not know", "read the log: kelctl log"};
}

std::string DescribeResult(KE_RESULT code) {
  const ResultCode row = FindResultCode(code);
  return std::to_string(code) + " " + row.name + ": " + row.text;
}

std::string WindowsError(unsigned long error) {
  wchar_t text[512];
  DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text,
                                static_cast<DWORD>(std::size(text)), nullptr);
  while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) --length;
  const std::string number = "Windows error " + std::to_string(error);
  return length == 0 ? number : number + ": " + Utf8FromWide({text, length});
}

CallError::CallError(const std::string& exportName, KE_RESULT result)
    : std::runtime_error(exportName + " failed with " + DescribeResult(result)), result(result) {}

}  // namespace kelctl
