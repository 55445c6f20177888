#include <doctest/doctest.h>

#include <string>

#include "KELUtils.h"
#include "support/inner_module.h"
#include "support/recorded_program.h"

namespace {

constexpr char kControlWindow[] = "KELUtils guide test";

// Tries until there is a result, for a minute at most.
auto Await(auto attempt) {
  auto result = attempt();
  for (int i = 0; !result && i < 6000; ++i, result = attempt()) Sleep(10);
  return result;
}

// A window of the guide's process, which ends with a bit for each window that got the right message.
LRESULT CALLBACK GuideWindow(HWND window, UINT message, WPARAM word, LPARAM extra) {
  static LONG told = 0;
  const bool right = word == 0 && extra == 1 && GetForegroundWindow() == window;
  if (message == 33323) told |= right ? GetWindowLongPtrA(window, GWLP_USERDATA) : 128;
  if (message == WM_CLOSE) ExitProcess(told);
  return DefWindowProcA(window, message, word, extra);
}

}  // namespace

TEST_CASE("windows of a guide" * doctest::skip()) {
  // A new window comes in front of the older ones; that of bit 2 is the first to fit.
  const char* windows[][2] = {{"TfMain", "VarnInstall Main"}, {"TFMAIN", "A VarnInstall Main window"},
                              {"tfmain", "VarnInstall main"}, {"TfMain2", "VarnInstall Main"},
                              {"TfMain", "VarnInstall"},      {kControlWindow, "VarnInstall Main"}};
  for (LONG bit = 1; const auto& [name, title] : windows) {
    const WNDCLASSA type{0, GuideWindow, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, name};
    RegisterClassA(&type);
    const HWND window = CreateWindowA(name, title, WS_VISIBLE, 0, 0, 99, 99, nullptr, nullptr, nullptr, nullptr);
    SetWindowLongPtrA(window, GWLP_USERDATA, std::exchange(bit, bit * 2));
  }
  for (MSG message; GetMessageA(&message, nullptr, 0, 0);) DispatchMessageA(&message);
}

TEST_CASE("prompts: an exit code or the lack of the program becomes another result") {
  constexpr KE_RESULT failed = KE_PROMPT_FAILED;
  const std::tuple<uint32_t, KE_RESULT, KE_RESULT> rows[] = {
      {3, failed, failed}, {UINT32_MAX, failed, failed}, {0, 0, 0}, {1, 0, failed}, {2, 0, failed}};
  const support::AgentTree tree;
  const support::RecordedProgram program(tree, "KESAgent/KePIRes.exe");
  const std::string path = tree / "KELUtils" + "\\..\\KESAgent\\KePIRes.exe", reboot = path + " -MsgType:1 -CheckOS",
                    ask = path + " -MsgType:-7 -CheckOS -sec:9", countDown = path + " -MsgType:2 -CheckOS -sec:-5";
  for (const auto& [exitCode, question, afterCountDown] : rows) {
    CAPTURE(exitCode);
    uint32_t canReboot = 9, answer = 9;
    program.EndWith(exitCode);
    CHECK((KE_GetCanReboot(&canReboot) == question && KE_GetUserResponse(&answer, -7, 9) == question));
    CHECK((canReboot == answer && answer == (question == 0 ? exitCode : 0)));
    CHECK((KE_ShowRebootCountDown(-5) == afterCountDown && support::HeldTime::waited == INFINITE));
    CHECK(program.Lines() == reboot + "\n" + ask + "\n" + countDown + "\n");
  }
  CHECK(tree.Traced("KE_GetUserResponse;\"CreateProcess [Command = " + ask + "]\""));
  CHECK_FALSE(tree.Traced("KE_GetCanRebootEx;\"CreateProcess [Command = " + reboot + "]\""));
  program.Remove();
  uint32_t answer = 9;
  CHECK((KE_GetCanRebootEx(&answer, 1) == KE_PROGRAM_NOT_STARTED && answer == 0));
  CHECK((KE_ShowRebootCountDown(1) == KE_PROGRAM_NOT_STARTED && KE_ShowInstallDialogEx(1) == KE_PROGRAM_NOT_STARTED));
  CHECK(KE_ShowInstallDialog() == KE_SUCCESS);
}

TEST_CASE("prompts: the installation dialog is waited for, or its event does not close it") {
  const support::AgentTree tree;
  tree.AddDevkit("KePIRes.exe", "KESAgent");
  support::WriteFile(tree.Path("KESAgent/KePIRes.ini"), "[AUTO]\r\nAnswer=2\r\n");
  CHECK(KE_ShowInstallDialogEx(4294967295) == KE_SUCCESS);
  win::EventHandle(Await([] { return OpenEventA(SYNCHRONIZE, FALSE, "Global\\KePIRes_InstallEvent"); }));
  CHECK(KE_HideInstallDialog() == KE_SUCCESS);
  const auto log = [&] { return support::ReadFile(tree.Path("KESAgent/KePIRes.log")); };
  CHECK(Await([&] { return log().ends_with(" -MsgType:4 -RebootMsg:4294967295 -CheckOS\r\n"); }));
  CHECK(log().find(";0;") != std::string::npos);
}

TEST_CASE("installation guide: another window is closed, or that one in another state") {
  const std::tuple<int32_t, bool, DWORD, int32_t> rows[] = {
      {39, true, 0, 39}, {40, true, 2, 47}, {47, true, 2, 47}, {48, true, 0, 48}, {48, false, 2, 48}};
  for (const auto& [state, readable, told, after] : rows) {
    CAPTURE(state);
    const support::AgentTree tree;
    REQUIRE(KE_SetInstallState(&state, 0) == KE_SUCCESS);
    store::DropIntegraStore();
    const auto guide = win::StartProcess("\"" + std::string(_pgmptr) + "\" --no-skip -tc=\"windows of a guide\"", {});
    const HWND control = Await([] { return FindWindowA(kControlWindow, nullptr); });
    {
      const support::LockedFile lock(tree.Store("INTEGRA.DAT"), readable ? FILE_SHARE_READ | FILE_SHARE_WRITE : 0);
      CHECK(KE_HideInstalationGuide() == KE_SUCCESS);
    }
    PostMessageA(control, WM_CLOSE, 0, 0);
    CHECK((guide.Wait(60000) == WAIT_OBJECT_0 && guide.ExitCode() == told));
    int32_t left = 0;
    CHECK((KE_GetInstallState(&left) == KE_SUCCESS && left == after));
  }
}
