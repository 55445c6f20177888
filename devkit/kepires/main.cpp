// KePIRes.exe: asks the user what the agent wants to know, and ends with the answer.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "kepires/dialog.h"
#include "kepires/install_event.h"
#include "kepires/settings.h"
#include "logfile/module_log.h"
#include "sharedfile/module_path.h"

namespace kepires {
namespace {

/// How the program ends, and why.
struct End {
  ExitCode code;
  const char* meaning;

  End(ExitCode code) noexcept : End(code, MeaningOf(code)) {}
  End(ExitCode code, const char* meaning) noexcept : code(code), meaning(meaning) {}
};

/// Control characters would break the log's lines.
void Log(const End& end, const char* commandLine) noexcept {
  char text[600];
  std::snprintf(text, sizeof text, "%d;%s;%s", end.code, end.meaning, commandLine);
  std::replace_if(
      text, text + std::strlen(text), [](unsigned char c) { return c < ' '; }, '?');
  logfile::LogBesideModule(text);
}

End AnswerAutomatically(const Prompt& prompt, const Automatic& automatic, HANDLE closing) noexcept {
  if (prompt.kind == kInstallationDialog)
    return WaitForSingleObject(closing, automatic.installation) == WAIT_OBJECT_0 ? kYes : kTimeOut;
  Sleep(automatic.delay);
  const std::uint32_t answer = prompt.kind == kRebootCountDown ? automatic.countDown : automatic.answer;
  return {static_cast<ExitCode>(answer), "set by KePIRes.ini"};
}

End Run(const char* commandLine) noexcept {
  char path[MAX_PATH];
  if (!sharedfile::FindOwnPath(path)) path[0] = '\0';
  const char* const separator = std::strrchr(path, '\\');
  Prompt prompt;
  if (const auto problem = ReadSwitches(SwitchesOf(commandLine, separator ? separator + 1 : path), prompt))
    return *problem;
  std::optional<Automatic> automatic;
  if (const auto problem = ReadSettings(automatic)) return *problem;

  EventHandle closing;
  if (prompt.kind == kInstallationDialog) {
    closing = MakeInstallEvent();
    if (!closing) return kNoEvent;
  }
  if (automatic) return AnswerAutomatically(prompt, *automatic, closing.Get());
  if (TimeLimitOf(prompt) == 0u) return kYes;  // a countdown without time
  return ShowDialog(prompt, closing.Get());
}

}  // namespace
}  // namespace kepires

int WINAPI WinMain(HINSTANCE, HINSTANCE, char*, int) {
  const char* const commandLine = GetCommandLineA();
  const kepires::End end = kepires::Run(commandLine);
  kepires::Log(end, commandLine);
  return end.code;
}
