#include "kepires/prompt.h"

#include <doctest/doctest.h>

using namespace kepires;

TEST_CASE("prompt: where the switches begin") {
  const std::string_view rows[][2] = {{"C:\\a b\\..\\KESAgent\\KePIRes.exe -MsgType:1", " -MsgType:1"},
                                      {"C:\\x kepires.exe -sec:1\\KEPIRES.EXE -MsgType:1", " -MsgType:1"},
                                      {"C:\\KePIRes.exe old\\KePIRes.exe", ""},
                                      {"\"C:\\a b\\KePIRes.exe\" -MsgType:1", " -MsgType:1"},
                                      {"KePIRes.exe2 -sec:1", " -sec:1"}};
  for (const auto& [line, switches] : rows) CHECK(SwitchesOf(line, "KePIRes.exe") == switches);
}

TEST_CASE("prompt: switches, with time limits, and command lines that are refused") {
  const struct {
    const char* switches;
    std::optional<ExitCode> problem;
    std::int32_t kind = 0;
    std::optional<std::uint32_t> limit = {};
    std::uint32_t rebootMessage = 0;
  } rows[] = {{" -MsgType:1 -CheckOS -sec:9", {}, 1, 9u},
              {"\t-checkos  -SEC:-2147483648 -msgtype:-7 ", {}, -7},
              {"-MsgType:4 -RebootMsg:4294967295 -CheckOS -sec:5", {}, 4, {}, UINT32_MAX},
              {"-MsgType:2", {}, 2, 60u},
              {"-MsgType:2 -sec:-5", {}, 2, 0u},
              {"-CheckOS", kNoKind},
              {"-MsgType 1", kUnknownSwitch},
              {"-MsgType:", kBadNumber},
              {"-MsgType:1 -sec:2147483648", kBadNumber},
              {"-CheckOS -CheckOS -MsgType:1", kRepeatedSwitch}};
  for (const auto& row : rows) {
    Prompt prompt;
    CHECK_MESSAGE((ReadSwitches(row.switches, prompt) == row.problem), row.switches);
    if (row.problem) continue;
    CHECK((prompt.kind == row.kind && prompt.rebootMessage == row.rebootMessage));
    CHECK_MESSAGE((TimeLimitOf(prompt) == row.limit), row.switches);
  }
}
