// The portable part: texts of the policy files, and the names of Windows.
#include "policy/policy_texts.h"

#include <doctest/doctest.h>

#include <tuple>

#include "policy/os_identification.h"

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

TEST_CASE("scripts.ini: a removal that takes another script or line, or leaves a gap") {
  const struct {
    const char *text, *scripts;
    const char16_t* parameters;  // to be taken out
    const char* left;            // "-" for a model without sections
  } rows[] = {
      {"[Startup]|0Parameters=x|[Shutdown]|0CmdLine=b|0Parameters=x|", "b(x)", u"x", "[Startup]|0Parameters=x|"},
      {"[0CmdLine=a|10CmdLine=c|10Parameters=3|2CmdLine=b|2Parameters=x|", "a()b(x)c(3)", u"x",
       "[0CmdLine=a|1CmdLine=c|1Parameters=3|"},
      {" [SHUTDOWN] |\t0cmdline = a |0PARAMETERS= x |1CmdLine=b|", "a(x)b()", u"x", " [SHUTDOWN] |0CmdLine=b|"},
      {";|[Shutdown]|;0CmdLine=z|0CmdLine=a|N=1|0Parameters=x||[More]|0CmdLine=m", "a(x)", u"x",
       ";|[Shutdown]|;0CmdLine=z|N=1||[More]|0CmdLine=m"},
      {"[0Parameters=h|1CmdLine=a|1Parameters=x|2CmdLine=b|", "a(x)b()", u"x", "[Shutdown]|1Parameters=h|0CmdLine=b|"},
      {"[0CmdLine=a|0Parameters=\"x\"|", "a(x)", u"\"x\"", "-"},
      {"[0X=|4294967296CmdLine=a|999999999CmdLine=b|999999999Parameters=x|", "b(x)", u"x", "[0X=|4294967296CmdLine=a|"},
  };
  for (const auto& row : rows) {
    CAPTURE(row.text);
    auto ini = ParseScriptsIni(Text(row.text));
    REQUIRE((ini && TextOf(*ini) == Text(row.text)));
    CHECK(Shown(ScriptsOf(*ini, kShutdown)) == row.scripts);
    RemoveMatching(*ini, kShutdown, {row.parameters});
    CHECK((HasSections(*ini) ? TextOf(*ini) == Text(row.left) : std::string("-") == row.left));
  }
  auto ini = ParseScriptsIni(Text("[0CmdLine=a|0Parameters=x|1CmdLine=b|1Parameters=x|"));
  CHECK(Shown(RemoveMatching(*ini, kShutdown, {u"x", u"b"})) == "b(x)");
}

TEST_CASE("scripts.ini: a new script that runs before the others, or reads otherwise than it was given") {
  const struct {
    const char* text;
    Script script;
    const char* changed;
  } rows[] = {
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
  const std::u16string zero(u"[Shutdown]\0", 11), huge(kLongestScriptsIni + 1, L'x');
  for (const auto& text : {Text("[Shutdown]|[A]|[shutdown]|"), zero, huge}) CHECK_FALSE(ParseScriptsIni(text));
  for (const char* bytes : {"\xFF\xFEx", "x"}) CHECK_FALSE(DecodeUtf16(bytes));
}

TEST_CASE("gpt.ini: a step to another version, another place of the extension, or a text that is not understood") {
  const std::string extension = "{42B5FAAE-6536-11D2-AE5A-0000F87571E3}",
                    lowTool = "{00000000-0000-0000-0000-000000000009}", tool = "{40B6664F-4972-11D1-A7CA-0000F87571E3}",
                    highTool = "{ffffffff-0000-0000-0000-000000000009}";
  const std::string low = "[" + lowTool + tool + "]", high = "[" + highTool + lowTool + "]",
                    ours = "[" + extension + tool + "]";
  const std::string g = "[General]\r\n", names = "gPCMachineExtensionNames=", no = "refused";
  constexpr auto kListed = ScriptsExtension::kListed, kAsItIs = ScriptsExtension::kAsItIs;
  const std::tuple<ScriptsExtension, std::string, std::string> rows[] = {
      {kAsItIs, g + "Version=131072\r\n", g + "Version=131073\r\n"},
      {kAsItIs, g + "Version=4294967295", g + "Version=4294901761"},
      {kAsItIs, g + "Version=4294967296", no},
      {kAsItIs, g + "k=v\r\n\r\n[A]\r\nVersion=7", g + "k=v\r\nVersion=1\r\n\r\n[A]\r\nVersion=7"},
      {kListed, "x=1", "x=1\r\n" + g + names + ours + "\r\nVersion=1\r\n"},
      {kAsItIs, ";\xE4\n [GENERAL]\n version\t= 4 \nVersion=9\n[General]\nVersion=3",
       ";\xE4\n [GENERAL]\n version\t= 5 \nVersion=9\n[General]\nVersion=3"},
      {kListed, g + "Version='7'\r\n" + names + "\"" + low + "\"",
       g + "Version='8'\r\n" + names + "\"" + low + ours + "\""},
      {kAsItIs, g + std::string("Version=1\0", 10), no},
      {kListed, g + names + low + "[" + extension + "\r\nVersion=1", no},
      {kListed, g + names + low + high + "\r\nVersion=1", g + names + low + ours + high + "\r\nVersion=2"},
      {kListed, g + "Version=1\r\n" + names + low + ours, g + "Version=2\r\n" + names + low + ours},
      {kListed, g + "Version=1\r\n" + names + "[" + extension + lowTool + highTool + "]",
       g + "Version=2\r\n" + names + "[" + extension + lowTool + tool + highTool + "]"},
  };
  for (const auto& [extensions, text, changed] : rows) {
    CHECK(StepMachineVersion(text, extensions).value_or(no) == changed);
    CHECK((extensions == kAsItIs || ListsScriptsExtension(changed) == (changed != no)));
  }
  CHECK_FALSE(ListsScriptsExtension(g + names + low + high));
  CHECK_FALSE(StepMachineVersion(std::string(kLongestGptIni + 1, 'x'), kAsItIs));
  CHECK(NewGptIni() == g + "gPCFunctionalityVersion=2\r\n" + names + ours + "\r\nVersion=1\r\n");
}

TEST_CASE("names of Windows: another release, edition, architecture, service pack or build") {
  enum : std::uint8_t { kOdd = 0, kDesk = 1, kDomain = 2, kServer = 3, kIntel = 0, kItanium = 6, kAmd64 = 9 };
  const auto nt = [](unsigned major, unsigned minor, std::uint8_t type, std::uint16_t suite = 0,
                     std::uint16_t processor = kAmd64) {
    OsFacts facts;
    facts.processor = processor;
    facts.version = {true, 0, major, minor, 0xABCD04D2, 2, L"SP", 3, 0, suite, type, 0};
    return facts;
  };
  const auto with = [](bool OsFacts::*fact, OsFacts facts) { return facts.*fact = true, facts; };
  OsFacts options = nt(5, 1, kOdd), nt4 = with(&OsFacts::hotfixQ246009, nt(4, 0, kDesk, 0, kIntel)), old, all;
  options.productOptions = {false, false, L"SERVERNT"};  // counts because the key could not be opened
  nt4.version.servicePackText = L"Service Pack 6";
  old.version = {.major = 4, .minor = 2, .platform = 3, .servicePackText = L""};
  all = with(&OsFacts::tabletPc, with(&OsFacts::mediaCenter, nt(5, 2, kDomain, 0x102, kItanium)));
  all.version.servicePackText = std::wstring(127, L's');
  const std::string build = " SP (Build 1234)";
  const std::tuple<OsFacts, std::uint32_t, std::string> rows[] = {
      {with(&OsFacts::starter, nt(5, 1, kDesk)), 0x40, "Microsoft Windows XP x64 Starter Edition (Suite 0x0)" + build},
      {with(&OsFacts::serverR2, nt(5, 2, kDesk)), 0x80,
       "Microsoft Windows Server 2003 \"R2\" x64 Professional (Suite 0x0)" + build},
      {nt(5, 2, kServer, 0x410, kIntel), 0x80,
       "Microsoft Windows Server 2003 x86, Standard Edition (Suite 0x410)" + build},
      {nt(5, 3, kServer), 0, "Unknow operative sistem (5 - 3)"},
      {nt(6, 1, kServer), 0x800, "Windows Server 2008 \"R2\""},
      {nt(6, 5, kDesk), 0x40000000, "Unknow Windows operative system (6 - 5)"},
      {nt(10, 0, kDesk), 0x10000, "Microsoft Windows 10"},
      {nt(10, 0, kServer), 0x20000, "Windows Server 2016"},
      {options, 0x40, "Microsoft Windows XP x64 Advanced Server 5.1" + build},
      {nt4, 0x10, "Microsoft Windows NT x86 Workstation 4.0 (Suite 0x0) Service Pack 6a (Build 1234)"},
      {old, 0, "Unknow Windows operative sistem (4 - 2)"},
  };
  for (const auto& [facts, code, name] : rows) {
    const OsRecord os = DescribeOs(facts);
    const std::wstring shown = os.displayName;
    CHECK(std::string(shown.begin(), shown.end()).starts_with(name));
    CHECK_MESSAGE((os.code == code && os.identified == (facts.version.platform == 2)), name);
  }
  const OsRecord os = DescribeOs(all);
  CHECK((os.architecture == 8 && os.is64Bit && os.isServer && os.isTerminalServices && os.metrics == 5));
  CHECK(std::wstring(os.displayName).size() == 149);
}
