#include <doctest/doctest.h>

#include <string>

#include "kelmnapi/component_command.h"
#include "logfile/shown_text.h"
#include "settings/numbers.h"

TEST_CASE("component commands: the first word is a component, and nothing else is") {
  const std::string longest(64, 'K'), full = "K " + std::string(8189, 'x');
  for (const std::string command : {"k2\t -x ", "COM12  \"a b\"", longest.c_str(), full.c_str()}) {
    const auto parts = kelmnapi::ParseCommand(command);
    CHECK((parts && parts->component == command.substr(0, command.find_first_of(" \t"))));
    CHECK((parts && parts->rest == command.substr(parts->component.size())));
  }
  for (const char* bad : {"", " K", "..\\K", "K/K", "C:K", "\"K\"", "K.exe", "K\xC9", "K\n", "nul", "Aux -x", "lpT9"})
    CHECK(!kelmnapi::ParseCommand(bad));
  CHECK((!kelmnapi::ParseCommand(longest + "K") && !kelmnapi::ParseCommand(full + "x")));
}

TEST_CASE("numbers of settings") {
  CHECK(settings::ParseNumber(" -2147483648\t") == INT32_MIN);
  for (const char* bad : {"", " ", "x", "1x", "1 2", "2147483648", "1,", ",1", "1,,2", "1;2"})
    CHECK((!settings::ParseNumber(bad) && !settings::ParseNumbers(bad)));
  std::string list = "0";
  for (int more = 63; more > 0; --more) list += ", 1559 ";
  CHECK((settings::ParseNumbers(list)->count == 64 && settings::ParseNumbers(list)->values[63] == 1559));
  CHECK(!settings::ParseNumbers(list + ",7"));
}

TEST_CASE("texts in a log are cut and forge no line") {
  CHECK(logfile::ShownText("a\r\n\x7F\xE9;").Text() == std::string("a???\xE9;"));
  const std::string cut(513, 'x');
  CHECK(logfile::ShownText(&cut[1]).Text() == cut.substr(1));
  CHECK(logfile::ShownText(&cut[0]).Text() == cut.substr(1) + "...");
}
