#include "shared/texts.h"

#include <doctest/doctest.h>

#include "kepires/prompt.h"

TEST_CASE("numbers and lines of logs: what is not one is refused, and no text forges a line") {
  CHECK(devkit::ParseNumber("-2147483648", INT32_MIN, INT32_MAX) == INT32_MIN);
  for (const char* bad : {"", " ", "x", "1x", "1 2", "+1", "2147483648", "1,", ",1", "1,,2", "1;2"})
    CHECK((!devkit::ParseNumber(bad, INT32_MIN, INT32_MAX) && devkit::ParseNumbers(bad).empty()));
  CHECK(!devkit::ParseNumber("-0", 0, 9));
  std::string list = "0";
  for (int more = 63; more > 0; --more) list += ", 1559 ";
  CHECK((devkit::ParseNumbers(list).size() == 64 && devkit::ParseNumbers(list)[63] == 1559));
  CHECK(devkit::ParseNumbers(list + ",7").empty());
  CHECK(devkit::OneLine("a\r\n\x7F\xE9;") == "a???\xE9;");
  const std::string cut(513, 'x');
  CHECK(devkit::OneLine(&cut[1]) == cut.substr(1));
  CHECK(devkit::OneLine(&cut[0]) == cut.substr(1) + "...");
}

TEST_CASE("prompts: switches with their time limits, and command lines that are refused") {
  using namespace kepires;
  const struct {
    const char* line;
    std::optional<ExitCode> problem;
    std::int32_t kind = 0;
    std::optional<std::uint32_t> limit = {};
    std::uint32_t rebootMessage = 0;
  } rows[] = {{"C:\\a b\\..\\KESAgent\\KePIRes.exe -MsgType:1 -CheckOS -sec:9", {}, 1, 9u},
              {"C:\\x kepires.exe -sec:1\\KEPIRES.EXE \t-checkos  -SEC:-2147483648 -msgtype:-7 ", {}, -7},
              {"\"C:\\a b\\KePIRes.exe\" -MsgType:4 -RebootMsg:4294967295 -sec:5", {}, 4, {}, UINT32_MAX},
              {"KePIRes.exe2 -MsgType:2", {}, 2, 60u},
              {"KePIRes.exe -MsgType:2 -sec:-5", {}, 2, 0u},
              {"C:\\KePIRes.exe old\\KePIRes.exe", kNoKind},
              {"KePIRes.exe -MsgType 1", kUnknownSwitch},
              {"KePIRes.exe -MsgType:", kBadNumber},
              {"KePIRes.exe -MsgType:1 -sec:2147483648", kBadNumber},
              {"KePIRes.exe -CheckOS -CheckOS -MsgType:1", kRepeatedSwitch}};
  for (const auto& row : rows) {
    Prompt prompt;
    CHECK_MESSAGE((ReadSwitches(SwitchesOf(row.line, "KePIRes.exe"), prompt) == row.problem), row.line);
    const bool same = prompt.kind == row.kind && prompt.rebootMessage == row.rebootMessage;
    CHECK_MESSAGE((row.problem || (same && TimeLimitOf(prompt) == row.limit)), row.line);
  }
}
