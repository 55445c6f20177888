#include "policy/policy_texts.h"

#include <doctest/doctest.h>

using namespace policy;

TEST_CASE("gpt.ini: a step of the machine's version, with the scripts extension or without") {
  const std::string extension = "{42B5FAAE-6536-11D2-AE5A-0000F87571E3}",
                    tool = "{40B6664F-4972-11D1-A7CA-0000F87571E3}";
  const std::string lowTool = "{00000000-0000-0000-0000-000000000009}",
                    highTool = "{ffffffff-0000-0000-0000-000000000009}";
  const std::string low = "[" + lowTool + tool + "]", high = "[" + highTool + lowTool + "]",
                    ours = "[" + extension + tool + "]";
  const std::string g = "[General]\r\n", names = "gPCMachineExtensionNames=";
  constexpr bool kListed = true, kAsItIs = false;
  constexpr char kRefused[] = "refused";
  const struct {
    const char* name;
    bool listed;
    std::string text, changed;
  } rows[] = {
      {"from 0", kAsItIs, g + "Version=0\r\n", g + "Version=1\r\n"},
      {"the high word stays", kAsItIs, g + "Version=131072\r\n", g + "Version=131073\r\n"},
      {"the low word is full", kAsItIs, g + "Version=4294967295", g + "Version=4294901761"},
      {"too large", kAsItIs, g + "Version=4294967296", kRefused},
      {"no number", kAsItIs, g + "Version=1x", kRefused},
      {"empty", kAsItIs, g + "Version=\r\nk=v", g + "Version=1\r\nk=v"},
      {"none here", kAsItIs, g + "k=v\r\n\r\n[A]\r\nVersion=7", g + "k=v\r\nVersion=1\r\n\r\n[A]\r\nVersion=7"},
      {"no section, no end", kListed, "x=1", "x=1\r\n" + g + names + ours + "\r\nVersion=1\r\n"},
      {"everything else stays", kAsItIs, ";\xE4\n [GENERAL]\n version\t= 4 \nVersion=9\n[General]\nVersion=3",
       ";\xE4\n [GENERAL]\n version\t= 5 \nVersion=9\n[General]\nVersion=3"},
      {"in quotes", kAsItIs, g + "Version= \"7\" \r\n", g + "Version= \"8\" \r\n"},
      {"both in quotes", kListed, g + "Version='7'\r\n" + names + "\"" + low + "\"",
       g + "Version='8'\r\n" + names + "\"" + low + ours + "\""},
      {"half in quotes", kAsItIs, g + "Version=\"7", kRefused},
      {"zeros", kAsItIs, g + std::string("Version=1\0", 10), kRefused},
      {"the list is not looked at", kAsItIs, g + names + "[x\r\nVersion=1", g + names + "[x\r\nVersion=2"},
      {"no list", kListed, g + names + "[x]\r\nVersion=1", kRefused},
      {"a list without its end", kListed, g + names + low + "[" + extension + "\r\nVersion=1", kRefused},
      {"an empty list", kListed, g + "Version=1\r\n" + names + "\r\n", g + "Version=2\r\n" + names + ours + "\r\n"},
      {"sorted", kListed, g + names + low + high + "\r\nVersion=1", g + names + low + ours + high + "\r\nVersion=2"},
      {"listed already", kListed, g + "Version=1\r\n" + names + low + ours, g + "Version=2\r\n" + names + low + ours},
      {"with other tools", kListed, g + "Version=1\r\n" + names + "[" + extension + lowTool + highTool + "]",
       g + "Version=2\r\n" + names + "[" + extension + lowTool + tool + highTool + "]"},
  };
  for (const auto& row : rows) {
    CAPTURE(row.name);
    const auto extensions = row.listed ? ScriptsExtension::kListed : ScriptsExtension::kAsItIs;
    CHECK(StepMachineVersion(row.text, extensions).value_or(kRefused) == row.changed);
    if (row.listed && row.changed != kRefused) CHECK(ListsScriptsExtension(row.changed));
  }
  CHECK_FALSE(ListsScriptsExtension(g + names + low + high));
  CHECK_FALSE(StepMachineVersion(std::string(kLongestGptIni + 1, 'x'), ScriptsExtension::kAsItIs));
  CHECK(NewGptIni() == g + "gPCFunctionalityVersion=2\r\n" + names + ours + "\r\nVersion=1\r\n");
}
