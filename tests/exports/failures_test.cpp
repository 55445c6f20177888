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
  void UsePlugin(const string& path) const {
    WriteFile(Path("KelUpg/KelUpg.ini"), "[PLUGINS]\r\nKEC=" + path + "\r\n");
  }
  // The lines of level 0, and of level 20 those of programs and plug-ins, without those that repeat the one before. "@"
  // stands for the library's folder and "#" for that of the tree.
  string Lines() const {
    string log = Log(), lines, last;
    for (const auto& [path, sign] : {std::pair{*this / "KELUtils\\", "@"}, {*this / "", "#"}})
      for (size_t at; (at = log.find(path)) != string::npos;) log.replace(at, path.size(), sign);
    static const std::regex line(R"(;(0;KELUtils;[^;]*;"|20;KELUtils;[^;]*;"C\w* (?:failed|not init))([^\r\n]*)\r\n)");
    for (std::sregex_iterator match(log.begin(), log.end(), line), end; match != end; ++match) {
      if (match->str() != last) lines += match->str(1) + match->str(2) + "\n";
      last = match->str();
    }
    return std::regex_replace(lines, std::regex(";KELUtils;"), " ");
  }
};

char g_text[99];
int32_t g_size = sizeof g_text;
uint32_t g_word;
KE_PROXY g_proxy;
string g_file;

#define FAILING(name, ...) [](const LoadedDll& dll) -> KE_RESULT { return CALL(dll, name)(__VA_ARGS__); }
const auto kGetProxy = FAILING(KE_GetConfiguratedProxy, &g_proxy);
const auto kAskPlugin = FAILING(KE_GetInetConfig, &g_proxy, 0);

}  // namespace

TEST_CASE("failures: a missing module or program leaves no line, another one or one too many") {
  const auto none = [](const FailureTree&) {};
  const auto noCrypto = [](const FailureTree& tree) {
    std::filesystem::remove(tree.Path("KELUtils/ApiCr.dll"));
    WriteFile(tree.Store("INTEGRA.DAT"), FakeEnciphered("[A]"));
    WriteFile(g_file = tree / "values.dat", FakeEnciphered("[S]\r\nK=v\r\n"));
  };
  const string agentFails =
      "0 KE_GetConfiguratedProxy;\"Could not load required library, KELAGAPI. Return Error Code : [";
  const struct {
    std::function<void(const FailureTree&)> arrange;
    std::function<KE_RESULT(const LoadedDll&)> call;
    KE_RESULT result;
    string lines;
  } rows[] = {
      {noCrypto, FAILING(KE_GetAgentID, g_text, 9), 1783, "0 LoadCrypto;\"Could not load @ApiCr.dll - Error 126\"\n"},
      {noCrypto, FAILING(KE_GetEncryptedFileValue, "S", "K", g_text, 9, g_file.c_str()), 1784,
       "0 LoadCrypto;\"Could not load ApiCr.dll - Error 161\"\n"},  // without an install path
      {noCrypto, FAILING(KE_EncryptSetting, "s", 1, g_text, &g_size), 1783,
       "0 LoadCrypto;\"Could not load @ApiCr.dll - Error 126\"\n0 KE_EncryptSetting;\"Could not load "
       "ApiCrFunctions\"\n"},
      {none, kGetProxy, 1790,
       "0 OpenAgentApi;\"Could not load @..\\Common\\KELAGAPI.dll - Error 126\"\n" + agentFails + "1790]\"\n"},
      {[](const FailureTree& tree) { tree.AddFake("FakeKERegister", "Common/KELAGAPI.dll"); }, kGetProxy, 1791,
       "0 OpenAgentApi;\"Could not load function for @..\\Common\\KELAGAPI.dll - Error 127\"\n" + agentFails +
           "1791]\"\n"},
      {[](const FailureTree& tree) {
         const string whole = support::ReadFile(support::TestFolder() / "FakeKELAGAPI.dll");
         WriteFile(tree.Path("Common/KELAGAPI.dll"), Without(whole, "KE_AGAPI_SetProxyConfig"));
       },
       kGetProxy, 1791,
       "0 KE_GetConfiguratedProxy;\"Could not load function for #Common\\KELAGAPI.dll - Error 127\"\n" + agentFails +
           "1791]\"\n"},
      {none, FAILING(KE_UpdateNow), 1799,
       "0 LoadLauncher;\"Could not load @..\\Common\\KELMNAPI.dll - Error 126\"\n0 KE_UpdateNow;\"Could not load "
       "KELMNAPI\"\n"},
      {none, FAILING(KE_SendReport), 0,
       "0 OpenLauncher;\"Could not load @..\\Common\\KELMNAPI.dll - Error 126\"\n"
       "0 KE_SendReport;\"Could not load required library, KELMNAPI . Return Error Code : [1799]\"\n"},
      {none, FAILING(KE_RebootForcedEvent, "p"), 1802,
       "0 LoadEventApi;\"Could not load @..\\KELTVEVT\\TvEvAPI.dll - Error 126\"\n"
       "0 KE_RebootForcedEvent;\"Could not load TvEvAPI\"\n"},
      {none, FAILING(KE_SetVersion, "KEAGENT", "1"), 0,
       "0 ExecuteLocalProcessAction;\"Could not load @..\\KELUPG\\KELUPG.dll - Error 126\"\n"},
      {none, FAILING(KE_GetEventDescription, 1, g_text, 9, nullptr), 1801,
       "0 KE_GetEventDescription;\"Could not load @..\\KESAgent\\KePIRes.exe - Error 126\"\n"
       "0 KE_GetEventDescription;\"Error loading @..\\KESAgent\\KePIRes.exe\"\n"},
      {none, kAskPlugin, 1778,
       "0 KE_INSTALL_GetInetConfig;\"Could not load the plug-in KEC: @..\\KelUpg\\KelUpg.ini has no path of it\"\n"},
      {[](const FailureTree& tree) { tree.UsePlugin("KEC.dll"); }, kAskPlugin, 1778,
       "0 KE_INSTALL_GetInetConfig;\"Could not load KEC.dll - Error 161\"\n"},
      {[](const FailureTree& tree) {
         tree.AddDevkit("KELRCM.dll", "KelUpg"), tree.UsePlugin(tree / "KelUpg\\KELRCM.dll");
       },
       kAskPlugin, 1778,
       "0 KE_INSTALL_GetInetConfig;\"Could not load function for #KelUpg\\KELRCM.dll - Error 127\"\n"},
      {[](const FailureTree& tree) {
         tree.AddDevkit("KEC.dll", "KelUpg"), tree.UsePlugin(tree / "KelUpg\\KEC.dll");
         WriteFile(tree.Path("KelUpg/KEC.ini"), "[PLUGIN]\r\nMode=2\r\n");
       },
       kAskPlugin, 1778, "20 KE_INSTALL_GetInetConfig;\"Could not initialise the plug-in #KelUpg\\KEC.dll\"\n"},
      {none, FAILING(KE_ScheduleTaskReboot, "c", 1, &g_word), 1786,
       "20 CallZumAT;\"CreateProcess failed [Command = \"@zumat\" -addjob:KEPLPMNG:\"c\" -Next:Boot:1]\"\n"},
      {none, FAILING(KE_LaunchKEPWInst), 1796,
       "20 LaunchKEPWinst;\"CreateProcess failed [Command = \"@KepWInst.exe\" -FORCE]\"\n"},
      {none, FAILING(KE_ShowInstallDialog), 0,
       "20 KE_ShowInstallDialogEx;\"CreateProcess failed [Command = "
       "@..\\KESAgent\\KePIRes.exe -MsgType:4 -RebootMsg:0 -CheckOS]\"\n"},
  };
  for (const auto& row : rows) {
    const FailureTree tree;
    row.arrange(tree);
    CHECK(row.call(LoadedDll(tree.Path("KELUtils/KELUtils.dll"))) == row.result);
    CHECK(tree.Lines() == row.lines);
  }
}
