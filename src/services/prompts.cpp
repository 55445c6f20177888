#include "services/prompts.h"

#include <windows.h>

#include "frame/module.h"
#include "frame/sibling_program.h"
#include "frame/trace.h"
#include "services/prompt_command.h"
#include "win/owner.h"

namespace services {
namespace {

constexpr DWORD kHighestAnswer = 2;
constexpr char kInstallEvent[] = "Global\\KePIRes_InstallEvent";

/// One start of the prompt program. The path goes to the platform twice: as the application and, without quotes, as the
/// beginning of the command line.
class PromptStart {
 public:
  PromptStart(const char* function, const std::string& switches)
      : path_(PromptProgram(frame::GetModuleDirectory())),
        program_{function, path_ + switches, {.application = path_.c_str()}} {}
  PromptStart(const PromptStart&) = delete;  // the program points to the path
  PromptStart& operator=(const PromptStart&) = delete;

  void Announce() const noexcept { frame::TraceCommand(program_); }

  KE_RESULT Launch() const { return frame::Start(program_) ? KE_SUCCESS : KE_PROGRAM_NOT_STARTED; }

  /// Waits as long as it takes; `exitCode` is stored after a success.
  KE_RESULT LaunchAndWait(DWORD highestExitCode, DWORD& exitCode) const {
    return frame::StartAndWait(program_, INFINITE, highestExitCode, exitCode);
  }

 private:
  std::string path_;
  frame::SiblingProgram program_;
};

KE_RESULT Ask(const PromptStart& prompt, const char* function, std::uint32_t& answer) {
  DWORD exitCode = 0;
  const KE_RESULT result = prompt.LaunchAndWait(kHighestAnswer, exitCode);
  answer = exitCode;
  if (result == KE_SUCCESS) {
    Trace(frame::kInfo, function, "Succeeded [CanReboot = %d]", static_cast<int>(answer));
  }
  return result;
}

}  // namespace

KE_RESULT AskCanReboot(const char* function, std::uint32_t& answer) {
  return Ask(PromptStart(function, PromptSwitches(kCanRebootPrompt)), function, answer);
}

KE_RESULT AskUser(const char* function, std::int32_t kind, std::int32_t seconds, std::uint32_t& answer) {
  const PromptStart prompt(function, PromptSwitches(kind, seconds));
  prompt.Announce();
  return Ask(prompt, function, answer);
}

KE_RESULT ShowRebootCountDown(const char* function, std::int32_t seconds) {
  DWORD exitCode = 0;
  return PromptStart(function, PromptSwitches(kRebootCountDownPrompt, seconds)).LaunchAndWait(0, exitCode);
}

KE_RESULT ShowInstallDialog(const char* function, std::uint32_t rebootMessage) {
  return PromptStart(function, InstallDialogSwitches(rebootMessage)).Launch();
}

void CloseInstallDialog() noexcept {
  const win::EventHandle event(OpenEventA(EVENT_MODIFY_STATE, FALSE, kInstallEvent));
  if (event) SetEvent(event.Get());
}

}  // namespace services
