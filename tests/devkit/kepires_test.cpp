#include <doctest/doctest.h>

#include "kepires/dialog.h"
#include "kepires/resource.h"
#include "support/product_tree.h"
#include "win/process.h"

using namespace kepires;

namespace {

constexpr DWORD kLimit = 60000;  // milliseconds for anything that should come soon

/// Tries until there is a result, or the time is over.
auto Await(auto attempt) {
  auto result = attempt();
  for (DWORD waited = 0; !result && waited < kLimit; waited += 20, result = attempt()) Sleep(20);
  return result;
}

DWORD CodeOf(const win::Process& instance) {
  return instance.Wait(kLimit) == WAIT_OBJECT_0 ? instance.ExitCode().value_or(99) : 99;
}

HWND WindowOf(const win::Process& instance) {
  HWND at = nullptr;
  Await([&] {
    DWORD owner = 0;
    at = FindWindowExA(nullptr, at, "#32770", nullptr);  // from the first one again after the last
    return at != nullptr && GetWindowThreadProcessId(at, &owner) && owner == instance.Id() && IsWindowVisible(at);
  });
  return at;
}

std::string TextOf(const win::Process& instance, int item) {
  char text[200];
  return std::string(text, GetDlgItemTextA(WindowOf(instance), item, text, sizeof text));
}

/// The program in a folder whose name looks like switches, with its settings.
struct Prompter : support::Folder {
  Prompter() { AddDevkit("KePIRes.exe", "a -CheckOS b"); }
  void Set(const std::string& settings) const { support::WriteFile(folder / "KePIRes.ini", "[AUTO]\r\n" + settings); }
  win::Process Start(const std::string& switches) const {
    return win::StartProcess(program + switches, {.application = program.c_str()});
  }
  const std::filesystem::path folder = Path("a -CheckOS b");
  const std::string program = (folder / "KePIRes.exe").string();
};

}  // namespace

TEST_CASE("prompts: automatic answers, and what is refused") {
  const std::tuple<const char*, const char*, DWORD> rows[] = {
      {"Answer=1", " -MsgType:1 -CheckOS", kNo},
      {"Answer=255\r\nDelay=1", " -MsgType:-9 -CheckOS -sec:0", 255},
      {"Answer=2\r\nCountDown=3", " -MsgType:2", 3},
      {"Answer=2\r\nInstallation=0", " -MsgType:4 -RebootMsg:1 -CheckOS", kTimeOut},
      {"Answer=256", " -MsgType:1", kBadSetting},
      {"", " -MsgType:2 -CheckOS -sec:-5", 0},
      {"Answer=1", " -MsgType:1 \t x\x01", kUnknownSwitch}};
  const Prompter prompter;
  for (const auto& [settings, switches, code] : rows) {
    prompter.Set(settings);
    CHECK_MESSAGE(CodeOf(prompter.Start(switches)) == code, switches);
  }
  const std::string end = ";3;unknown switch;" + prompter.program + " -MsgType:1 ? x?\r\n";
  CHECK(support::ReadFile(prompter.folder / "KePIRes.log").ends_with(end));
}

TEST_CASE("prompts: dialogs, their buttons and the end of their time") {
  const std::tuple<const char*, UINT, WPARAM, DWORD, const char*> rows[] = {
      {" -MsgType:1 -CheckOS", WM_COMMAND, IDYES, kYes, "restarted now?|"},
      {" -MsgType:1 -CheckOS -sec:0", WM_COMMAND, IDNO, kNo, "restarted now?|"},
      {" -MsgType:7 -sec:100", WM_CLOSE, 0, kLater, "question 7. Do you agree?|Seconds left: "},
      {" -MsgType:2 -CheckOS -sec:100", WM_COMMAND, BUTTON_RESTART, kYes, "|Seconds left: "}};
  const Prompter prompter;
  const win::Process over = prompter.Start(" -MsgType:2 -CheckOS -sec:1"), late = prompter.Start(" -MsgType:1 -sec:1");
  for (const auto& [switches, message, button, code, text] : rows) {
    const win::Process instance = prompter.Start(switches);
    CHECK((TextOf(instance, TEXT_QUESTION) + "|" + TextOf(instance, TEXT_TIME)).find(text) != std::string::npos);
    PostMessageA(WindowOf(instance), message, button, 0);
    CHECK_MESSAGE(CodeOf(instance) == code, switches);
  }
  CHECK((CodeOf(over) == kYes && CodeOf(late) == kLater));
}

TEST_CASE("prompts: the event closes every installation prompt; it is gone with the last") {
  const Prompter prompter;
  const win::Process one = prompter.Start(" -MsgType:4"), two = prompter.Start(" -MsgType:4 -RebootMsg:4294967295");
  CHECK(TextOf(one, TEXT_NUMBER) + TextOf(two, TEXT_NUMBER) == "04294967295");
  SendMessageA(WindowOf(one), WM_COMMAND, IDCANCEL, 0);
  const auto open = [] { return win::EventHandle(OpenEventA(EVENT_MODIFY_STATE, FALSE, kInstallEventName)); };
  SetEvent(open().Get());
  CHECK((CodeOf(one) == kYes && CodeOf(two) == kYes));
  CHECK(!open());
  prompter.Set("Answer=2");
  const win::Process automatic = prompter.Start(" -MsgType:4");
  SetEvent(Await(open).Get());
  CHECK(CodeOf(automatic) == kYes);
}
