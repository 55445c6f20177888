// The prompts as their user sees them and types into them. A program of 64 bits: Wine paints no windows of 32-bit ones.
#include <windows.h>

#include <cstdio>

#include "kepires/dialog.h"
#include "kepires/resource.h"

using namespace kepires;

namespace {

struct Row {
  const char* name;
  Prompt prompt;
  WPARAM key;  // pressed once the dialog is painted
  int framed;  // the button with the frame of a default; 0: none
  ExitCode answer;
  bool atOnce;  // by the key; else at the end of the time
};

int g_failures = 0;

void Check(bool holds, const Row& row, const char* what) {
  if (holds) return;
  std::printf("%s: %s\n", row.name, what);
  ++g_failures;
}

// The number of pixels of a control that differ from its first one, which is also stored.
int PaintedPixels(HWND control, COLORREF& first) {
  RECT area{};
  GetClientRect(control, &area);
  const HDC screen = GetDC(control);
  first = GetPixel(screen, 0, 0);
  int painted = 0;
  for (int y = 0; y < area.bottom; ++y) {
    for (int x = 0; x < area.right; ++x) painted += GetPixel(screen, x, y) != first;
  }
  ReleaseDC(control, screen);
  return painted;
}

DWORD WINAPI Use(void* parameter) {
  const Row& row = *static_cast<const Row*>(parameter);
  HWND window = nullptr;
  COLORREF first = 0;
  for (int i = 0; i < 100 && PaintedPixels(GetDlgItem(window, TEXT_QUESTION), first) < 100; ++i) {
    Sleep(20);
    window = FindWindowA("#32770", "Tavrin Security Agent");
  }
  Sleep(100);  // the buttons come last
  Check(PaintedPixels(GetDlgItem(window, TEXT_QUESTION), first) >= 100, row, "the text is not painted");
  for (const int button : {IDYES, IDNO, IDCANCEL, BUTTON_RESTART}) {
    if (GetDlgItem(window, button) == nullptr) continue;
    Check(PaintedPixels(GetDlgItem(window, button), first) >= 100, row, "a button is not painted");
    Check((first == GetSysColor(COLOR_WINDOWFRAME)) == (button == row.framed), row, "the frame is at the wrong button");
  }
  GUITHREADINFO info{};
  info.cbSize = sizeof info;
  GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &info);
  for (const UINT message : {WM_KEYDOWN, WM_KEYUP}) PostMessageA(info.hwndFocus, message, row.key, 1);
  return 0;
}

}  // namespace

int main() {
  Row rows[] = {{"question, Enter", {.kind = 1, .seconds = {}}, VK_RETURN, IDCANCEL, kLater, true},
                {"question, space", {.kind = 1, .seconds = {}}, VK_SPACE, IDCANCEL, kLater, true},
                {"countdown, Enter", {.kind = 2, .seconds = 4}, VK_RETURN, 0, kYes, false},
                {"countdown, space", {.kind = 2, .seconds = 4}, VK_SPACE, 0, kYes, false}};
  for (Row& row : rows) {
    const DWORD begin = GetTickCount();
    const HANDLE user = CreateThread(nullptr, 0, Use, &row, 0, nullptr);
    Check(ShowDialog(row.prompt, nullptr) == row.answer, row, "another answer");
    Check(row.atOnce || GetTickCount() - begin >= 3900, row, "the key ended the countdown");
    WaitForSingleObject(user, INFINITE);
    CloseHandle(user);
  }
  return g_failures;
}
