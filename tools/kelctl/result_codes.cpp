#include <windows.h>

#include <algorithm>
#include <iterator>

#include "errors.h"
#include "texts.h"

namespace kelctl {
namespace {

#define KELCTL_CODE(name, text) \
  { name, #name, text }

constexpr ResultCode kResultCodes[] = {
    KELCTL_CODE(KE_SUCCESS, "success"),
    KELCTL_CODE(KE_MISSING_ARGUMENT, "a required argument is missing or empty"),
    KELCTL_CODE(KE_BUFFER_TOO_SMALL, "the value is longer than the buffer"),
    KELCTL_CODE(KE_NOT_CREATED, "an entry or buffer could not be created, or a wait failed"),
    KELCTL_CODE(KE_EXCEPTION, "an unexpected failure inside the library"),
    KELCTL_CODE(KE_NO_MODULE_DIRECTORY, "the directory of KELUtils.dll is unknown"),
    KELCTL_CODE(KE_STORE_UNUSABLE, "the value is missing, or its file cannot be opened or written"),
    KELCTL_CODE(KE_CRYPTO_NOT_LOADED, "the crypto module ApiCr.dll could not be loaded"),
    KELCTL_CODE(KE_CRYPTO_FAILED, "enciphering or deciphering failed"),
    KELCTL_CODE(KE_BAD_SCHEDULER_COMMAND, "a scheduler command has no blank after the program name"),
    KELCTL_CODE(KE_SCHEDULER_NOT_STARTED, "the scheduler could not be started"),
    KELCTL_CODE(KE_SCHEDULER_FAILED, "the scheduler ended with a non-zero exit code"),
    KELCTL_CODE(KE_SCHEDULER_TIMEOUT, "the scheduler did not finish within 90 seconds"),
    KELCTL_CODE(KE_OUT_OF_RANGE, "an argument is out of range"),
    KELCTL_CODE(KE_AGENT_NOT_LOADED, "the agent module could not be loaded"),
    KELCTL_CODE(KE_AGENT_INCOMPLETE, "the agent module lacks configuration functions"),
    KELCTL_CODE(KE_AGENT_READ_FAILED, "reading an agent configuration record failed"),
    KELCTL_CODE(KE_AGENT_WRITE_FAILED, "writing an agent configuration record failed"),
    KELCTL_CODE(KE_INSTALLER_PLUGIN_UNUSABLE, "the installer plug-in is not usable"),
    KELCTL_CODE(KE_INSTALL_HELPER_NOT_STARTED, "the installer helper could not be started"),
    KELCTL_CODE(KE_PROGRAM_NOT_STARTED, "a program could not be started"),
    KELCTL_CODE(KE_PROMPT_FAILED, "the prompt program ended with an unexpected exit code"),
    KELCTL_CODE(KE_LAUNCHER_NOT_LOADED, "the launcher module could not be loaded"),
    KELCTL_CODE(KE_REGISTRY_UNUSABLE, "a proxy record or the plug-in registry key is not usable"),
    KELCTL_CODE(KE_MODULE_NOT_LOADED, "an action module, plug-in or the prompt program could not be loaded"),
    KELCTL_CODE(KE_EVENTS_UNAVAILABLE, "the event module is unavailable"),
    KELCTL_CODE(KE_EVENT_NOT_SENT, "an event was not sent, or has no description"),
    KELCTL_CODE(KE_UPDATE_FAILED_1566, "the update ended with exit code 1566"),
    KELCTL_CODE(KE_UPDATE_FAILED_1558, "the update ended with exit code 1558"),
    KELCTL_CODE(KE_UPDATE_FAILED_1565, "the update ended with exit code 1565"),
    KELCTL_CODE(KE_UPDATE_FAILED_5000, "the update ended with exit code 5000"),
    KELCTL_CODE(KE_UPDATE_FAILED_1567, "the update ended with exit code 1567"),
};

#undef KELCTL_CODE

}  // namespace

ResultCode FindResultCode(KE_RESULT code) {
  const auto* const row = std::ranges::find(kResultCodes, code, &ResultCode::code);
  return row != std::end(kResultCodes) ? *row : ResultCode{code, "(unnamed)", "a code this kelctl does not know"};
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
