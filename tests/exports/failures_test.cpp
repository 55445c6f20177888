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
    AddDevkit("TvLogSys.dll", "Common");
    WriteFile(Path("KELUtils/KELUTILS.INI"), "[LOG]\r\nLEVELLOG=20\r\n");
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
    string log = support::ReadFile(Path("KELUtils/KELUtils.log")), lines, last;
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

KE_RESULT GetAgentId(const LoadedDll& dll) {
  char id[9];
  return CALL(dll, KE_GetAgentID)(id, sizeof id);
}

KE_RESULT GetProxy(const LoadedDll& dll) {
  KE_PROXY proxy;
  return CALL(dll, KE_GetConfiguratedProxy)(&proxy);
}

KE_RESULT AskPlugin(const LoadedDll& dll) {
  KE_PROXY proxy;
  return CALL(dll, KE_GetInetConfig)(&proxy, 0);
}

string NotLoaded(const string& function, const string& path, int error = 126) {
  return function + ";\"Could not load " + path + " - Error " + std::to_string(error) + "\"\n";
}

string Lacks(const string& function, const string& path) {
  return function + ";\"Could not load function for " + path + " - Error 127\"\n";
}

string Line(const string& function, const string& text) { return function + ";\"" + text + "\"\n"; }

void RegisterProtection(const string& directory) {
  RegSetKeyValueA(HKEY_LOCAL_MACHINE, "Software\\Tavrin Security\\Orvane\\Protections", "P", REG_SZ, directory.c_str(),
                  static_cast<DWORD>(directory.size()));
}

void Nothing(const FailureTree&) {}

}  // namespace

TEST_CASE("failures: each missing module and program has its line, whoever asked for it") {
  const string up = "@\\KELUtils\\..\\", agent = "KE_GetConfiguratedProxy", plugin = "KE_INSTALL_GetInetConfig";
  const auto agentFails = [&](const string& code) {
    return Line(agent, "Could not load required library, KELAGAPI. Return Error Code : [" + code + "]");
  };
  const auto notStarted = [](const string& function, const string& command) {
    return Line(function, "CreateProcess failed [Command = " + command + "]");
  };
  const auto enciphered = [](const FailureTree& tree) {
    WriteFile(tree.Store("INTEGRA.DAT"), FakeEnciphered(WholeStore("a")));
    tree.Remove("KELUtils/ApiCr.dll");
  };
  const Failure rows[] = {
      {enciphered, GetAgentId, 1783, NotLoaded("LoadCrypto", "@\\KELUtils\\ApiCr.dll")},
      {[&](const FailureTree& tree) { enciphered(tree), tree.AddFake(kBadModule, "KELUtils/ApiCr.dll"); }, GetAgentId,
       1783, Lacks("LoadCrypto", "@\\KELUtils\\ApiCr.dll")},
      {[](const FailureTree& tree) { WriteFile(tree.Path("KELUtils/values.dat"), FakeEnciphered("[S]\r\nK=v\r\n")); },
       [](const LoadedDll& dll) {
         char value[9], folder[MAX_PATH];
         const string own(folder, GetModuleFileNameA(dll.Handle(), folder, sizeof folder));
         const string file = own.substr(0, own.rfind('\\')) + "\\values.dat";
         return CALL(dll, KE_GetEncryptedFileValue)("S", "K", value, sizeof value, file.c_str());
       },
       1784, NotLoaded("LoadCrypto", "ApiCr.dll", ERROR_BAD_PATHNAME)},  // without an install path
      {[](const FailureTree& tree) { tree.Remove("KELUtils/ApiCr.dll"); },
       [](const LoadedDll& dll) {
         char setting[99];
         int32_t size = sizeof setting;
         return CALL(dll, KE_EncryptSetting)("s", 1, setting, &size);
       },
       1783,
       NotLoaded("LoadCrypto", "@\\KELUtils\\ApiCr.dll") + Line("KE_EncryptSetting", "Could not load ApiCrFunctions")},
      {Nothing, GetProxy, 1790, NotLoaded("OpenAgentApi", up + "Common\\KELAGAPI.dll") + agentFails("1790")},
      {[](const FailureTree& tree) { tree.AddFake(kBadModule, "KELUtils/KELAGAPI.dll"); }, GetProxy, 1790,
       Lacks("OpenAgentApi", "@\\KELUtils\\KELAGAPI.dll") + agentFails("1790")},
      {[](const FailureTree& tree) { tree.AddFake(kBadModule, "Common/KELAGAPI.dll"); }, GetProxy, 1791,
       Lacks("OpenAgentApi", up + "Common\\KELAGAPI.dll") + agentFails("1791")},
      {[](const FailureTree& tree) {
         const string whole = support::ReadFile(support::TestFolder() / "FakeKELAGAPI.dll");
         WriteFile(tree.Path("Common/KELAGAPI.dll"), Without(whole, "KE_AGAPI_SetProxyConfig"));
       },
       GetProxy, 1791, Lacks(agent, "@\\Common\\KELAGAPI.dll") + agentFails("1791")},
      {Nothing, [](const LoadedDll& dll) { return CALL(dll, KE_UpdateNow)(); }, 1799,
       NotLoaded("LoadLauncher", up + "Common\\KELMNAPI.dll") + Line("KE_UpdateNow", "Could not load KELMNAPI")},
      {Nothing, [](const LoadedDll& dll) { return CALL(dll, KE_SendReport)(); }, 0,
       NotLoaded("OpenLauncher", up + "Common\\KELMNAPI.dll") +
           Line("KE_SendReport", "Could not load required library, KELMNAPI . Return Error Code : [1799]")},
      {Nothing, [](const LoadedDll& dll) { return CALL(dll, KE_RebootForcedEvent)("p"); }, 1802,
       NotLoaded("LoadEventApi", up + "KELTVEVT\\TvEvAPI.dll") +
           Line("KE_RebootForcedEvent", "Could not load TvEvAPI")},
      {Nothing, [](const LoadedDll& dll) { return CALL(dll, KE_SetVersion)("KEAGENT", "1"); }, 0,
       NotLoaded("ExecuteLocalProcessAction", up + "KELUPG\\KELUPG.dll")},
      {Nothing,
       [](const LoadedDll& dll) {
         char text[9];
         return CALL(dll, KE_GetEventDescription)(1, text, sizeof text, nullptr);
       },
       1801,
       NotLoaded("KE_GetEventDescription", up + "KESAgent\\KePIRes.exe") +
           Line("KE_GetEventDescription", "Error loading " + up + "KESAgent\\KePIRes.exe")},
      {Nothing, AskPlugin, 1778,
       Line(plugin, "Could not load the plug-in KEC: " + up + "KelUpg\\KelUpg.ini has no path of it")},
      {[](const FailureTree& tree) { tree.UsePlugin("C:/none/KEC.dll"); }, AskPlugin, 1778,
       NotLoaded(plugin, "C:\\none\\KEC.dll")},
      {[](const FailureTree& tree) { tree.UsePlugin("KEC.dll"); }, AskPlugin, 1778,
       NotLoaded(plugin, "KEC.dll", ERROR_BAD_PATHNAME)},
      {[](const FailureTree& tree) { tree.UsePlugin(tree / "Common\\TvLogSys.dll"); }, AskPlugin, 1778,
       Lacks(plugin, "@\\Common\\TvLogSys.dll")},
      {[](const FailureTree& tree) {
         tree.AddDevkit("KELRCM.dll", "KelUpg"), tree.UsePlugin(tree / "KelUpg\\KELRCM.dll");
       },
       AskPlugin, 1778, Lacks(plugin, "@\\KelUpg\\KELRCM.dll")},
      {[](const FailureTree& tree) {
         tree.AddDevkit("KEC.dll", "KelUpg"), tree.UsePlugin(tree / "KelUpg\\KEC.dll");
         WriteFile(tree.Path("KelUpg/KEC.ini"), "[PLUGIN]\r\nMode=2\r\n");
       },
       AskPlugin, 1778, "", Line(plugin, "Could not initialise the plug-in @\\KelUpg\\KEC.dll")},
      {[](const FailureTree&) { RegisterProtection("C:\\none/"); },
       [](const LoadedDll& dll) { return CALL(dll, KE_InitializeSystem)(""); }, 1777,
       NotLoaded("LoadPluginReload", "C:\\none\\KERegister.dll")},
      {Nothing,
       [](const LoadedDll& dll) {
         uint32_t word;
         return CALL(dll, KE_ScheduleTaskReboot)("c", 1, &word);
       },
       1786, "", notStarted("CallZumAT", "\"@\\KELUtils\\zumat\" -addjob:KEPLPMNG:\"c\" -Next:Boot:1")},
      {Nothing, [](const LoadedDll& dll) { return CALL(dll, KE_LaunchKEPWInst)(); }, 1796, "",
       notStarted("LaunchKEPWinst", "\"@\\KELUtils\\KepWInst.exe\" -FORCE")},
      {Nothing, [](const LoadedDll& dll) { return CALL(dll, KE_UpgradeComplete)(1, "1"); }, 1797, "",
       notStarted("IntegrateComputerKelTest", "\"" + up + "KesLpmng\\KEPLPMNG.exe\" KELTest -FORCE ")},
      {Nothing, [](const LoadedDll& dll) { return CALL(dll, KE_ScheduleUpgradeComplete)(1, "1"); }, 1797, "",
       notStarted("KE_ScheduleUpgradeComplete",
                  "\"" + up + "KesLpmng\\KEPLPMNG.exe\" KELUpg -FORCE -CONTINUE -UPGCOMPLETE:1 -VERSION:1")},
      {Nothing, [](const LoadedDll& dll) { return CALL(dll, KE_ShowInstallDialog)(); }, 0, "",
       notStarted("KE_ShowInstallDialogEx", up + "KESAgent\\KePIRes.exe -MsgType:4 -RebootMsg:0 -CheckOS")},
  };
  for (const Failure& row : rows) {
    CAPTURE(row.modules + row.detail);
    const FailureTree tree;
    row.arrange(tree);
    CHECK(row.call(LoadedDll(tree.Path("KELUtils/KELUtils.dll"))) == row.result);
    CHECK(tree.Lines('0') == row.modules);
    CHECK(tree.Lines('2').find(row.detail) != string::npos);
    RegDeleteTreeA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavrin Security");
  }
}
