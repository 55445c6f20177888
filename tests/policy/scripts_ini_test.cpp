#include "policy/policy_texts.h"

#include <doctest/doctest.h>

using namespace policy;

namespace {

constexpr auto kShutdown = ScriptKind::kShutdown;

// Texts of rows are ASCII, with "|" for CR LF; one that begins with "[0" begins with the line "[Shutdown]".
std::u16string Text(std::string text) {
  if (text.starts_with("[0") || text == "[") text.insert(1, "Shutdown]|");
  std::u16string wide;
  for (const char c : text) wide += c == '|' ? u"\r\n" : std::u16string(1, static_cast<char16_t>(c));
  return wide;
}

std::string Shown(const std::vector<Script>& scripts) {
  std::u16string shown;
  for (const Script& script : scripts) shown += script.program + u"(" + script.parameters + u")";
  return {shown.begin(), shown.end()};
}

}  // namespace

TEST_CASE("scripts.ini: the scripts of a text, and the text without those of some parameters") {
  const struct {
    const char *name, *text, *scripts;
    const char16_t* parameters;  // to be taken out
    const char* left;            // "-" for a model without sections
  } rows[] = {
      {"nothing", "", "", u"x", "-"},
      {"the other kind stays", "[Startup]|0Parameters=x|[Shutdown]|0CmdLine=b|0Parameters=x|", "b(x)", u"x",
       "[Startup]|0Parameters=x|"},
      {"two of four", "[0CmdLine=a|0Parameters=1|1CmdLine=b|1Parameters=x|2CmdLine=c|2Parameters=3|3Parameters=x|",
       "a(1)b(x)c(3)", u"x", "[0CmdLine=a|0Parameters=1|1CmdLine=c|1Parameters=3|"},
      {"a missing number; ten is behind two", "[0CmdLine=a|10CmdLine=c|10Parameters=3|2CmdLine=b|2Parameters=x|",
       "a()b(x)c(3)", u"x", "[0CmdLine=a|1CmdLine=c|1Parameters=3|"},
      {"names in any letter case, blanks", " [SHUTDOWN] |\t0cmdline = a |0PARAMETERS= x |1CmdLine=b|", "a(x)b()", u"x",
       " [SHUTDOWN] |0CmdLine=b|"},
      {"other lines stay", ";|[Shutdown]|;0CmdLine=z|0CmdLine=a|N=1|0Parameters=x||[More]|0CmdLine=m", "a(x)", u"x",
       ";|[Shutdown]|;0CmdLine=z|N=1||[More]|0CmdLine=m"},
      {"a line twice counts once", "[0CmdLine=a|0Parameters=x|0Parameters=y|1CmdLine=b", "a(x)b()", u"x",
       "[0CmdLine=b"},
      {"half a script goes behind the others", "[0Parameters=h|1CmdLine=a|1Parameters=x|2CmdLine=b|", "a(x)b()", u"x",
       "[Shutdown]|1Parameters=h|0CmdLine=b|"},
      {"as it is written", "[0CmdLine=a|0Parameters=\"x\"|", "a(x)", u"\"x\"", "-"},
      {"too large for a number", "[0X=|4294967296CmdLine=a|999999999CmdLine=b|999999999Parameters=x|", "b(x)", u"x",
       "[0X=|4294967296CmdLine=a|"},
  };
  for (const auto& row : rows) {
    CAPTURE(row.name);
    auto ini = ParseScriptsIni(Text(row.text));
    REQUIRE((ini && TextOf(*ini) == Text(row.text)));
    CHECK(Shown(ScriptsOf(*ini, kShutdown)) == row.scripts);
    RemoveMatching(*ini, kShutdown, {row.parameters});
    CHECK((HasSections(*ini) ? TextOf(*ini) == Text(row.left) : std::string("-") == row.left));
  }
  auto ini = ParseScriptsIni(Text("[0CmdLine=a|0Parameters=x|1CmdLine=b|1Parameters=x|"));
  CHECK(Shown(RemoveMatching(*ini, kShutdown, {u"x", u"b"})) == "b(x)");
}

TEST_CASE("scripts.ini: a script is added behind the others, and reads as it was given") {
  const struct {
    const char* text;
    Script script;
    const char* changed;
  } rows[] = {
      {"", {u"a", u"x"}, "|[Shutdown]|0CmdLine=a|0Parameters=x|"},
      {"[Startup]", {u"a", u""}, "[Startup]|[Shutdown]|0CmdLine=a|0Parameters=|"},
      {"[0CmdLine=a||[Startup]|", {u"b", u"2"}, "[0CmdLine=a|1CmdLine=b|1Parameters=2||[Startup]|"},
      {"[0Parameters=h|7CmdLine=a|", {u"b", u""}, "[Shutdown]|2Parameters=h|0CmdLine=a|1CmdLine=b|1Parameters=|"},
      {"[", {u"\"a b\"", u" x"}, "[0CmdLine=\"\"a b\"\"|0Parameters=\" x\"|"},
  };
  for (const auto& row : rows) {
    CAPTURE(row.text);
    auto ini = ParseScriptsIni(Text(row.text));
    AddScript(*ini, kShutdown, row.script);
    CHECK((TextOf(*ini) == Text(row.changed)));
    CHECK((ScriptsOf(*ParseScriptsIni(TextOf(*ini)), kShutdown).back() == row.script));
  }
}

TEST_CASE("scripts.ini: texts that cannot be understood, and file forms") {
  const std::u16string zero(u"[Shutdown]\0", 11), huge(kLongestScriptsIni + 1, L'x');
  for (const auto& text : {Text("[Shutdown]|[A]|[shutdown]|"), zero, huge}) CHECK_FALSE(ParseScriptsIni(text));
  for (const char* bytes : {"\xFF\xFEx", "x"}) CHECK_FALSE(DecodeUtf16(bytes));
  const std::string bytes("\xFF\xFE\xAC\x20\x3D\xD8", 6);  // the euro sign, and half a pair, which is kept
  CHECK((DecodeUtf16(bytes)->front() == 0x20AC && EncodeUtf16(*DecodeUtf16(bytes)) == bytes));
}

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
      {"the high word stays", kAsItIs, g + "Version=131072\r\n", g + "Version=131073\r\n"},
      {"the low word is full", kAsItIs, g + "Version=4294967295", g + "Version=4294901761"},
      {"too large", kAsItIs, g + "Version=4294967296", kRefused},
      {"no number", kAsItIs, g + "Version=1x", kRefused},
      {"empty", kAsItIs, g + "Version=\r\nk=v", g + "Version=1\r\nk=v"},
      {"none here", kAsItIs, g + "k=v\r\n\r\n[A]\r\nVersion=7", g + "k=v\r\nVersion=1\r\n\r\n[A]\r\nVersion=7"},
      {"no section, no end", kListed, "x=1", "x=1\r\n" + g + names + ours + "\r\nVersion=1\r\n"},
      {"everything else stays", kAsItIs, ";\xE4\n [GENERAL]\n version\t= 4 \nVersion=9\n[General]\nVersion=3",
       ";\xE4\n [GENERAL]\n version\t= 5 \nVersion=9\n[General]\nVersion=3"},
      {"both in quotes", kListed, g + "Version='7'\r\n" + names + "\"" + low + "\"",
       g + "Version='8'\r\n" + names + "\"" + low + ours + "\""},
      {"half in quotes", kAsItIs, g + "Version=\"7", kRefused},
      {"zeros", kAsItIs, g + std::string("Version=1\0", 10), kRefused},
      {"the list is not looked at", kAsItIs, g + names + "[x\r\nVersion=1", g + names + "[x\r\nVersion=2"},
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
