#include "agent/texts.h"

#include <doctest/doctest.h>

TEST_CASE("prompts: command lines") {
  using namespace agent;
  CHECK(PromptProgram("C:\\A B\\KELUtils") == "C:\\A B\\KELUtils\\..\\KESAgent\\KePIRes.exe");
  CHECK(PromptSwitches(kCanRebootPrompt) == " -MsgType:1 -CheckOS");
  CHECK(PromptSwitches(kRebootCountDownPrompt, 0) == " -MsgType:2 -CheckOS -sec:0");
  CHECK(PromptSwitches(INT32_MIN, -5) == " -MsgType:-2147483648 -CheckOS -sec:-5");
  CHECK(InstallDialogSwitches(UINT32_MAX) == " -MsgType:4 -RebootMsg:4294967295 -CheckOS");
}
