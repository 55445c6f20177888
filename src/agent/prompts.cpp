#include "agent/prompts.h"

#include <windows.h>

#include <cstdint>
#include <string_view>

#include "agent/texts.h"
#include "siblings/programs.h"
#include "store/accessors.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/owner.h"

namespace agent {

namespace {

constexpr DWORD kHighestAnswer = 2;
constexpr char kInstallEvent[] = "Global\\KePIRes_InstallEvent";

/// One start of the prompt program. The path goes to the platform twice: as the application and, without quotes, as the
/// beginning of the command line.
class PromptStart {
 public:
  PromptStart(const char* function, const std::string& switches)
      : path_(PromptProgram(win::GetModuleDirectory())),
        program_{function, path_ + switches, {.application = path_.c_str()}} {}
  PromptStart(const PromptStart&) = delete;  // the program points to the path
  PromptStart& operator=(const PromptStart&) = delete;

  void Announce() const noexcept { siblings::TraceCommand(program_); }

  KE_RESULT Launch() const { return siblings::Start(program_) ? KE_SUCCESS : KE_PROGRAM_NOT_STARTED; }

  /// Waits as long as it takes; `exitCode` is stored after a success.
  KE_RESULT LaunchAndWait(DWORD highestExitCode, DWORD& exitCode) const {
    return siblings::StartAndWait(program_, INFINITE, highestExitCode, exitCode);
  }

 private:
  std::string path_;
  siblings::SiblingProgram program_;
};

KE_RESULT Ask(const PromptStart& prompt, const char* function, std::uint32_t& answer) {
  DWORD exitCode = 0;
  const KE_RESULT result = prompt.LaunchAndWait(kHighestAnswer, exitCode);
  answer = exitCode;
  if (result == KE_SUCCESS) {
    Trace(trace::kInfo, function, "Succeeded [CanReboot = %d]", static_cast<int>(answer));
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

namespace {

constexpr std::int32_t kFirstGuidedState = 40, kLastGuidedState = 47;

constexpr UINT kCloseGuide = 33323;  // a private message of the guide
constexpr WPARAM kCloseGuideWord = 0;
constexpr LPARAM kCloseGuideLong = 1;

/// What `read`, a function of the platform, gives of a window's texts, as far as the block holds it.
std::string_view TextOf(int(WINAPI* read)(HWND, char*, int), HWND window, char (&block)[1024]) noexcept {
  const int length = read(window, block, sizeof block);
  return {block, static_cast<std::size_t>(length > 0 ? length : 0)};
}

bool IsGuide(HWND window) noexcept {
  char block[1024];
  return text::SameName(TextOf(GetClassNameA, window, block), "TfMain") &&
         TextOf(GetWindowTextA, window, block).find("VarnInstall Main") != std::string_view::npos;
}

void CloseGuide(HWND window) noexcept {
  // Lets this process take the foreground at once: a lock of 0 milliseconds.
  SystemParametersInfoA(SPI_SETFOREGROUNDLOCKTIMEOUT, 0, nullptr, 0);
  SetForegroundWindow(window);
  PostMessageA(window, kCloseGuide, kCloseGuideWord, kCloseGuideLong);
}

// The platform's callback: FALSE ends the enumeration.
BOOL CALLBACK CloseIfGuide(HWND window, LPARAM) noexcept {
  if (!IsGuide(window)) return TRUE;
  CloseGuide(window);
  return FALSE;
}

bool MayBeInstalling() {
  std::int32_t state = 0;
  return store::GetInstallState(&state) != KE_SUCCESS || (state >= kFirstGuidedState && state <= kLastGuidedState);
}

}  // namespace

KE_RESULT HideInstallGuide() {
  if (!MayBeInstalling()) return KE_SUCCESS;
  EnumWindows(CloseIfGuide, 0);
  store::SetInstallState(&kLastGuidedState, true);
  return KE_SUCCESS;
}

}  // namespace agent
