#include "services/install_guide.h"

#include <windows.h>

#include <cstdint>
#include <string_view>

#include "frame/text.h"

namespace services {
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
  return frame::SameName(TextOf(GetClassNameA, window, block), "TfMain") &&
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
  return KE_GetInstallState(&state) != KE_SUCCESS || (state >= kFirstGuidedState && state <= kLastGuidedState);
}

}  // namespace

KE_RESULT HideInstallGuide() {
  if (!MayBeInstalling()) return KE_SUCCESS;
  EnumWindows(CloseIfGuide, 0);
  KE_SetInstallState(&kLastGuidedState, 1);
  return KE_SUCCESS;
}

}  // namespace services
