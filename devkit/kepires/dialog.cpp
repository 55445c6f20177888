#include "kepires/dialog.h"

#include <cstdio>

#include "kepires/resource.h"
#include "win/owner.h"

namespace kepires {
namespace {

using DialogWindow = win::Owner<HWND, &DestroyWindow, 0>;

constexpr UINT_PTR kTimer = 1;
constexpr UINT kTickMilliseconds = 200;  // often enough that no second is skipped

/// An open dialog. The window keeps its address.
struct Dialog {
  const Prompt& prompt;
  std::optional<std::uint32_t> timeLimit;  // seconds
  ULONGLONG end = 0;                       // in GetTickCount64 milliseconds, if there is a time limit
  ULONGLONG shown = 0;                     // the seconds that the window shows
  std::optional<ExitCode> answer = {};     // ends the dialog
};

int TemplateOf(std::int32_t kind) noexcept {
  switch (kind) {
    case kRebootCountDown:
      return DIALOG_COUNT_DOWN;
    case kInstallationDialog:
      return DIALOG_INSTALLATION;
    default:
      return DIALOG_QUESTION;
  }
}

/// The answer when the time is over.
ExitCode AnswerAtEnd(std::int32_t kind) noexcept { return kind == kRebootCountDown ? kYes : kLater; }

void Tick(HWND window, Dialog& dialog) noexcept {
  const ULONGLONG now = GetTickCount64();
  if (now >= dialog.end) {
    dialog.answer = AnswerAtEnd(dialog.prompt.kind);
    return;
  }
  const ULONGLONG seconds = (dialog.end - now + 999) / 1000;
  if (seconds == dialog.shown) return;
  dialog.shown = seconds;
  char text[40];
  std::snprintf(text, sizeof text, "Seconds left: %lu", static_cast<unsigned long>(seconds));
  SetDlgItemTextA(window, TEXT_TIME, text);
}

void Begin(HWND window, Dialog& dialog) noexcept {
  const Prompt& prompt = dialog.prompt;
  if (prompt.kind == kInstallationDialog) {
    SetDlgItemInt(window, TEXT_NUMBER, prompt.rebootMessage, FALSE);
  } else if (prompt.kind != kCanRebootQuestion && prompt.kind != kRebootCountDown) {
    char question[64];
    std::snprintf(question, sizeof question, "The agent asks question %ld. Do you agree?",
                  static_cast<long>(prompt.kind));
    SetDlgItemTextA(window, TEXT_QUESTION, question);
  }
  if (!dialog.timeLimit) return;
  dialog.end = GetTickCount64() + 1000ull * *dialog.timeLimit;
  ShowWindow(GetDlgItem(window, TEXT_TIME), SW_SHOW);
  SetTimer(window, kTimer, kTickMilliseconds, nullptr);
  Tick(window, dialog);
}

/// The buttons of the questions and of the countdown. Closing a question is answering "later"; the other dialogs cannot
/// be closed by their user.
void Press(WORD button, Dialog& dialog) noexcept {
  const std::int32_t kind = dialog.prompt.kind;
  if (kind == kInstallationDialog) return;
  if (kind == kRebootCountDown) {
    if (button == BUTTON_RESTART) dialog.answer = kYes;
    return;
  }
  if (button == IDYES) dialog.answer = kYes;
  if (button == IDNO) dialog.answer = kNo;
  if (button == IDCANCEL) dialog.answer = kLater;
}

INT_PTR CALLBACK OnMessage(HWND window, UINT message, WPARAM word, LPARAM parameter) noexcept {
  if (message == WM_INITDIALOG) {
    SetWindowLongPtrA(window, DWLP_USER, parameter);
    Begin(window, *reinterpret_cast<Dialog*>(parameter));
    // A prompt may appear while the user types: neither Enter nor the space bar restarts the computer.
    const auto harmless = static_cast<WORD>(SendMessageA(window, DM_GETDEFID, 0, 0));
    if (const HWND first = GetDlgItem(window, harmless != 0 ? harmless : TEXT_TIME)) SetFocus(first);
    return FALSE;
  }
  auto* const dialog = reinterpret_cast<Dialog*>(GetWindowLongPtrA(window, DWLP_USER));
  if (dialog == nullptr) return FALSE;  // before WM_INITDIALOG
  if (message == WM_TIMER) Tick(window, *dialog);
  if (message == WM_COMMAND) Press(LOWORD(word), *dialog);
  return message == WM_TIMER || message == WM_COMMAND;
}

/// Handles the messages that have come, until there is an answer.
void Pump(HWND window, Dialog& dialog) noexcept {
  MSG message;
  while (!dialog.answer && PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) dialog.answer = kNoDialog;
    if (IsDialogMessageA(window, &message)) continue;
    TranslateMessage(&message);
    DispatchMessageA(&message);
  }
}

}  // namespace

ExitCode ShowDialog(const Prompt& prompt, HANDLE closing) noexcept {
  Dialog dialog{prompt, TimeLimitOf(prompt)};
  const DialogWindow window(CreateDialogParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(TemplateOf(prompt.kind)),
                                               nullptr, OnMessage, reinterpret_cast<LPARAM>(&dialog)));
  if (!window) return kNoDialog;
  const DWORD handles = closing == nullptr ? 0 : 1;
  while (!dialog.answer) {
    const DWORD woken = MsgWaitForMultipleObjectsEx(handles, &closing, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    if (woken == WAIT_FAILED) return kNoDialog;
    if (woken < WAIT_OBJECT_0 + handles) return kYes;
    Pump(window.Get(), dialog);
  }
  return *dialog.answer;
}

}  // namespace kepires
