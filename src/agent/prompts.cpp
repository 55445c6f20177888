#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "agent/agent.h"
#include "agent/texts.h"
#include "siblings/programs.h"
#include "siblings/sibling_table.h"
#include "store/accessors.h"
#include "text/text.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/process.h"

namespace agent {

namespace {

constexpr DWORD kHighestAnswer = 2;
constexpr char kInstallEvent[] = "Global\\KePIRes_InstallEvent";

constexpr std::int32_t kFirstGuidedState = 40, kLastGuidedState = 47;
constexpr UINT kCloseGuide = 33323;  // a private message of the guide
constexpr WPARAM kCloseGuideWord = 0;
constexpr LPARAM kCloseGuideLong = 1;

// One start of the prompt program. Windows receives the path twice: as the application and, without quotes, as the
// beginning of the command line.
struct Prompt {
  Prompt(const char* function, const std::string& switches)
      : path(win::ComponentFile(siblings::kPromptProgram.folder, siblings::kPromptProgram.file)),
        program{function, path + switches, {.application = path.c_str()}} {}
  Prompt(const Prompt&) = delete;  // the program points to the path
  Prompt& operator=(const Prompt&) = delete;

  const std::string path;
  const siblings::SiblingProgram program;
};

KE_RESULT Ask(const Prompt& prompt, const char* function, std::uint32_t& answer) {
  DWORD exitCode = 0;
  const KE_RESULT result = siblings::StartAndWait(prompt.program, INFINITE, kHighestAnswer, exitCode);
  answer = exitCode;
  if (result == KE_SUCCESS) Trace(trace::kInfo, function, "Succeeded [CanReboot = %d]", static_cast<int>(answer));
  return result;
}

// The text of a window that `read`, a function of Windows, stores in the block.
std::string_view TextOf(int(WINAPI* read)(HWND, char*, int), HWND window, char (&block)[1024]) noexcept {
  const int length = read(window, block, sizeof block);
  return {block, static_cast<std::size_t>(length > 0 ? length : 0)};
}

bool IsGuide(HWND window) noexcept {
  char block[1024];
  return text::SameName(TextOf(GetClassNameA, window, block), "TfMain") &&
         TextOf(GetWindowTextA, window, block).find("VarnInstall Main") != std::string_view::npos;
}

// The callback of EnumWindows: FALSE ends the enumeration.
BOOL CALLBACK CloseIfGuide(HWND window, LPARAM) noexcept {
  if (!IsGuide(window)) return TRUE;
  // Lets this process take the foreground at once: a lock of 0 milliseconds.
  SystemParametersInfoA(SPI_SETFOREGROUNDLOCKTIMEOUT, 0, nullptr, 0);
  SetForegroundWindow(window);
  PostMessageA(window, kCloseGuide, kCloseGuideWord, kCloseGuideLong);
  return FALSE;
}

bool MayBeInstalling() {
  std::int32_t state = 0;
  return store::GetInstallState(&state) != KE_SUCCESS || (state >= kFirstGuidedState && state <= kLastGuidedState);
}

}  // namespace

KE_RESULT AskCanReboot(const char* function, std::uint32_t& answer) {
  return Ask(Prompt(function, PromptSwitches(kCanRebootPrompt)), function, answer);
}

KE_RESULT AskUser(const char* function, std::int32_t kind, std::int32_t seconds, std::uint32_t& answer) {
  const Prompt prompt(function, PromptSwitches(kind, seconds));
  siblings::TraceCommand(prompt.program);
  return Ask(prompt, function, answer);
}

KE_RESULT ShowRebootCountDown(const char* function, std::int32_t seconds) {
  DWORD exitCode = 0;
  const Prompt prompt(function, PromptSwitches(kRebootCountDownPrompt, seconds));
  return siblings::StartAndWait(prompt.program, INFINITE, 0, exitCode);
}

KE_RESULT ShowInstallDialog(const char* function, std::uint32_t rebootMessage) {
  const Prompt prompt(function, InstallDialogSwitches(rebootMessage));
  return siblings::Start(prompt.program) ? KE_SUCCESS : KE_PROGRAM_NOT_STARTED;
}

void CloseInstallDialog() noexcept { win::SetNamedEvent(kInstallEvent); }

KE_RESULT HideInstallGuide() {
  if (!MayBeInstalling()) return KE_SUCCESS;
  EnumWindows(CloseIfGuide, 0);
  store::SetInstallState(&kLastGuidedState, true);
  return KE_SUCCESS;
}

}  // namespace agent
