// Every failure leaves its line in the log: a module at level 0, so that it is seen with the default settings, a
// program at level 20.
#include <doctest/doctest.h>

#include <functional>
#include <regex>
#include <string>

#include "exports/store_tree.h"

using std::string;
using support::LoadedDll;
using support::WriteFile;

namespace {

struct FailureTree : support::ProductTree {
  FailureTree() {
    TurnLogOn();
    WriteFile(Store("INTEGRA.DAT"), WholeStore("a"));
    for (const char* folder : {"KelUpg", "KESWD"}) std::filesystem::create_directory(Path(folder));
  }
  void Remove(const char* file) const { std::filesystem::remove(Path(file)); }
  void UsePlugin(const string& path) const {
    WriteFile(Path("KelUpg/KelUpg.ini"), "[PLUGINS]\r\nKEC=" + path + "\r\n");
  }
  // The lines of a level from the function on, without those that repeat the one before. "@" stands for the tree's
  // folder.
  string Lines(char level) const {
    string log = Log(), lines, last;
    const string folder = Path("").string(), root = folder.substr(0, folder.size() - 1);
    for (size_t at; (at = log.find(root)) != string::npos;) log.replace(at, root.size(), "@");
    static const std::regex line(R"((?:[^;\r\n]*;){3}(\d+);KELUtils;([^\r\n]*)\r\n)");
    for (std::sregex_iterator match(log.begin(), log.end(), line), end; match != end; ++match) {
      if ((*match)[1] != (level == '0' ? "0" : "20") || (*match)[2] == last) continue;
      last = (*match)[2];
      lines += last + "\n";
    }
    return lines;
  }
};

struct Failure {
  std::function<void(const FailureTree&)> arrange;
  std::function<KE_RESULT(const LoadedDll&)> call;
  KE_RESULT result;
  string modules;      // the lines of level 0, all of them
  string detail = {};  // one of level 20
};

constexpr char kBadModule[] = "FakeKERegister";  // loads, but lacks every other module's functions

char g_text[99];
int32_t g_size = sizeof g_text;
uint32_t g_word;
KE_PROXY g_proxy;
string g_file;

// What a row arranges, and the call that fails.
#define ARRANGED(...) [&](const FailureTree& tree) { __VA_ARGS__; }
#define FAILING(name, ...) [](const LoadedDll& dll) -> KE_RESULT { return CALL(dll, name)(__VA_ARGS__); }
const auto kGetProxy = FAILING(KE_GetConfiguratedProxy, &g_proxy);
const auto kAskPlugin = FAILING(KE_GetInetConfig, &g_proxy, 0);

string NotLoaded(const string& function, const string& path, int error = 126) {
  return function + ";\"Could not load " + path + " - Error " + std::to_string(error) + "\"\n";
}

string Lacks(const string& function, const string& path) {
  return function + ";\"Could not load function for " + path + " - Error 127\"\n";
}

string Line(const string& function, const string& text) { return function + ";\"" + text + "\"\n"; }

void Nothing(const FailureTree&) {}

}  // namespace

TEST_CASE("failures: a missing module or program leaves no line, another one or one too many") {
  const string up = "@\\KELUtils\\..\\", agent = "KE_GetConfiguratedProxy", plugin = "KE_INSTALL_GetInetConfig";
  const auto agentFails = [&](const string& code) {
    return Line(agent, "Could not load required library, KELAGAPI. Return Error Code : [" + code + "]");
  };
  const auto notStarted = [](const string& function, const string& command) {
    return Line(function, "CreateProcess failed [Command = " + command + "]");
  };
  const Failure rows[] = {
      {ARRANGED(tree.Remove("KELUtils/ApiCr.dll"), WriteFile(tree.Store("INTEGRA.DAT"), FakeEnciphered("[A]"))),
       FAILING(KE_GetAgentID, g_text, 9), 1783, NotLoaded("LoadCrypto", "@\\KELUtils\\ApiCr.dll")},
      {ARRANGED(WriteFile(tree / "values.dat", FakeEnciphered("[S]\r\nK=v\r\n")), g_file = tree / "values.dat"),
       FAILING(KE_GetEncryptedFileValue, "S", "K", g_text, 9, g_file.c_str()), 1784,
       NotLoaded("LoadCrypto", "ApiCr.dll", ERROR_BAD_PATHNAME)},  // without an install path
      {ARRANGED(tree.Remove("KELUtils/ApiCr.dll")), FAILING(KE_EncryptSetting, "s", 1, g_text, &g_size), 1783,
       NotLoaded("LoadCrypto", "@\\KELUtils\\ApiCr.dll") + Line("KE_EncryptSetting", "Could not load ApiCrFunctions")},
      {Nothing, kGetProxy, 1790, NotLoaded("OpenAgentApi", up + "Common\\KELAGAPI.dll") + agentFails("1790")},
      {ARRANGED(tree.AddFake(kBadModule, "Common/KELAGAPI.dll")), kGetProxy, 1791,
       Lacks("OpenAgentApi", up + "Common\\KELAGAPI.dll") + agentFails("1791")},
      {[](const FailureTree& tree) {
         const string whole = support::ReadFile(support::TestFolder() / "FakeKELAGAPI.dll");
         WriteFile(tree.Path("Common/KELAGAPI.dll"), Without(whole, "KE_AGAPI_SetProxyConfig"));
       },
       kGetProxy, 1791, Lacks(agent, "@\\Common\\KELAGAPI.dll") + agentFails("1791")},
      {Nothing, FAILING(KE_UpdateNow), 1799,
       NotLoaded("LoadLauncher", up + "Common\\KELMNAPI.dll") + Line("KE_UpdateNow", "Could not load KELMNAPI")},
      {Nothing, FAILING(KE_SendReport), 0,
       NotLoaded("OpenLauncher", up + "Common\\KELMNAPI.dll") +
           Line("KE_SendReport", "Could not load required library, KELMNAPI . Return Error Code : [1799]")},
      {Nothing, FAILING(KE_RebootForcedEvent, "p"), 1802,
       NotLoaded("LoadEventApi", up + "KELTVEVT\\TvEvAPI.dll") +
           Line("KE_RebootForcedEvent", "Could not load TvEvAPI")},
      {Nothing, FAILING(KE_SetVersion, "KEAGENT", "1"), 0,
       NotLoaded("ExecuteLocalProcessAction", up + "KELUPG\\KELUPG.dll")},
      {Nothing, FAILING(KE_GetEventDescription, 1, g_text, 9, nullptr), 1801,
       NotLoaded("KE_GetEventDescription", up + "KESAgent\\KePIRes.exe") +
           Line("KE_GetEventDescription", "Error loading " + up + "KESAgent\\KePIRes.exe")},
      {Nothing, kAskPlugin, 1778,
       Line(plugin, "Could not load the plug-in KEC: " + up + "KelUpg\\KelUpg.ini has no path of it")},
      {ARRANGED(tree.UsePlugin("KEC.dll")), kAskPlugin, 1778, NotLoaded(plugin, "KEC.dll", ERROR_BAD_PATHNAME)},
      {ARRANGED(tree.UsePlugin(tree / "Common\\TvLogSys.dll")), kAskPlugin, 1778,
       Lacks(plugin, "@\\Common\\TvLogSys.dll")},
      {ARRANGED(tree.AddDevkit("KELRCM.dll", "KelUpg"), tree.UsePlugin(tree / "KelUpg\\KELRCM.dll")), kAskPlugin, 1778,
       Lacks(plugin, "@\\KelUpg\\KELRCM.dll")},
      {[](const FailureTree& tree) {
         tree.AddDevkit("KEC.dll", "KelUpg"), tree.UsePlugin(tree / "KelUpg\\KEC.dll");
         WriteFile(tree.Path("KelUpg/KEC.ini"), "[PLUGIN]\r\nMode=2\r\n");
       },
       kAskPlugin, 1778, "", Line(plugin, "Could not initialise the plug-in @\\KelUpg\\KEC.dll")},
      {[](const FailureTree&) {
         RegSetKeyValueA(HKEY_LOCAL_MACHINE, "Software\\Tavrin Security\\Orvane\\Protections", "P", REG_SZ, "C:\\none/",
                         9);
       },
       FAILING(KE_InitializeSystem, ""), 1777, NotLoaded("LoadPluginReload", "C:\\none\\KERegister.dll")},
      {Nothing, FAILING(KE_ScheduleTaskReboot, "c", 1, &g_word), 1786, "",
       notStarted("CallZumAT", "\"@\\KELUtils\\zumat\" -addjob:KEPLPMNG:\"c\" -Next:Boot:1")},
      {Nothing, FAILING(KE_LaunchKEPWInst), 1796, "",
       notStarted("LaunchKEPWinst", "\"@\\KELUtils\\KepWInst.exe\" -FORCE")},
      {Nothing, FAILING(KE_ShowInstallDialog), 0, "",
       notStarted("KE_ShowInstallDialogEx", up + "KESAgent\\KePIRes.exe -MsgType:4 -RebootMsg:0 -CheckOS")},
  };
  for (const Failure& row : rows) {
    CAPTURE(row.modules + row.detail);
    const FailureTree tree;
    row.arrange(tree);
    CHECK((row.call(LoadedDll(tree.Path("KELUtils/KELUtils.dll"))) == row.result && tree.Lines('0') == row.modules));
    CHECK(tree.Lines('2').find(row.detail) != string::npos);
    RegDeleteTreeA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavrin Security");
  }
}
