// KePIRes.exe: asks the user a question of the agent, and ends with the answer.
#include <windows.h>

#include <sddl.h>

#include <cstring>

#include "kepires/dialog.h"
#include "shared/files.h"
#include "shared/texts.h"

using namespace devkit;

namespace kepires {
namespace {

// In the order of the exit codes.
constexpr const char* kMeanings[] = {"yes, or done",
                                     "no",
                                     "later",
                                     "unknown switch",
                                     "a number is missing or out of range",
                                     "a switch is there twice",
                                     "no -MsgType",
                                     "the dialog could not be shown",
                                     "the event could not be made",
                                     "the event was not set in time",
                                     "a setting is not a number of its range"};

/// The automatic mode: the section [AUTO] of KePIRes.ini answers instead of a user.
struct Automatic {
  std::optional<int> answer;  // exit code of every question; none: no automatic mode
  int countDown = 0;          // exit code of the countdown
  DWORD delay = 0;            // milliseconds before a question or the countdown ends
  DWORD installation = 0;     // milliseconds that the event may take
};

/// None when a value is not a number of its range.
std::optional<Automatic> ReadAutomatic() {
  const auto answer = ReadNumber("AUTO", "Answer", -1, 0, 255), countDown = ReadNumber("AUTO", "CountDown", 0, 0, 255),
             delay = ReadNumber("AUTO", "Delay", 0, 0, 60 * 1000),
             installation = ReadNumber("AUTO", "Installation", 60 * 1000, 0, 60 * 60 * 1000);
  if (!answer || !countDown || !delay || !installation) return std::nullopt;
  return Automatic{*answer < 0 ? std::nullopt : answer, *countDown, static_cast<DWORD>(*delay),
                   static_cast<DWORD>(*installation)};
}

/// Makes the event that closes the installation dialogs, or opens the one of another instance, for waiting only. Once
/// set it stays set, and is gone with the last instance. None when another program has taken the name.
win::EventHandle MakeInstallEvent() noexcept {
  // Everything for the system, administrators and the owner; setting and waiting (0x100002) for authenticated users.
  constexpr char kAccess[] = "D:(A;;GA;;;SY)(A;;GA;;;BA)(A;;GA;;;OW)(A;;0x100002;;;AU)";
  SECURITY_ATTRIBUTES security{sizeof security, nullptr, FALSE};
  if (!ConvertStringSecurityDescriptorToSecurityDescriptorA(kAccess, SDDL_REVISION_1, &security.lpSecurityDescriptor,
                                                            nullptr))
    return {};
  const win::Owner<HLOCAL, &LocalFree, 0> descriptor(security.lpSecurityDescriptor);
  return win::EventHandle(CreateEventExA(&security, kInstallEventName, CREATE_EVENT_MANUAL_RESET, SYNCHRONIZE));
}

int AnswerAutomatically(const Prompt& prompt, const Automatic& automatic, HANDLE closing) noexcept {
  if (prompt.kind == kInstallationDialog)
    return WaitForSingleObject(closing, automatic.installation) == WAIT_OBJECT_0 ? kYes : kTimeOut;
  Sleep(automatic.delay);
  return prompt.kind == kRebootCountDown ? automatic.countDown : *automatic.answer;
}

/// The exit code. `scripted` becomes true when the settings gave it.
int Run(const char* commandLine, bool& scripted) {
  const std::string path = OwnPath();
  Prompt prompt;
  if (const auto problem = ReadSwitches(SwitchesOf(commandLine, path.substr(path.rfind('\\') + 1)), prompt))
    return *problem;
  const auto automatic = ReadAutomatic();
  if (!automatic) return kBadSetting;
  win::EventHandle closing;
  if (prompt.kind == kInstallationDialog) {
    closing = MakeInstallEvent();
    if (!closing) return kNoEvent;
  }
  if (automatic->answer) {
    scripted = prompt.kind != kInstallationDialog;
    return AnswerAutomatically(prompt, *automatic, closing.Get());
  }
  if (TimeLimitOf(prompt) == 0u) return kYes;  // a countdown without time
  return ShowDialog(prompt, closing.Get());
}

}  // namespace
}  // namespace kepires

int WINAPI WinMain(HINSTANCE, HINSTANCE, char*, int) {
  return Guarded([] {
    bool scripted = false;
    const int code = kepires::Run(GetCommandLineA(), scripted);
    LogCall(std::to_string(code) + ";" + (scripted ? "set by KePIRes.ini" : kepires::kMeanings[code]) + ";" +
            OneLine(GetCommandLineA()));
    return static_cast<Result>(code);
  });
}
