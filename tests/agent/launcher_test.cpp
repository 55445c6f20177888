#include <doctest/doctest.h>

#include <regex>
#include <string>

#include "KELUtils.h"
#include "agent/agent.h"
#include "siblings/modules.h"
#include "support/fake_sibling.h"
#include "support/inner_module.h"
#include "support/recorded_program.h"
#include "trace/trace.h"
#include "upgrade/upgrade.h"

using support::AgentTree;
using support::HeldTime;

namespace {

// A tree with the launcher and the plug-ins of the development kit.
struct LauncherTree : AgentTree {
  LauncherTree() {
    AddDevkit("KELMNAPI.dll", "Common");
    AddDevkit("KELRCM.dll", "Plugins");
    AddDevkit("KEC.dll", "Plugins");
    for (const char* folder : {"KelUpg", "KelConf", "KesLpmng"}) std::filesystem::create_directories(Path(folder));
    UsePlugins(*this / "Plugins\\KELRCM.dll", *this / "Plugins\\KEC.dll");
  }
  void UsePlugins(const std::string& remoteControl, const std::string& installer) const {
    WritePrivateProfileStringA("PLUGINS", "RCM", remoteControl.c_str(), (*this / "KelConf\\Kelconf.ini").c_str());
    WritePrivateProfileStringA("PLUGINS", "KEC", installer.c_str(), (*this / "KelUpg\\KelUpg.ini").c_str());
  }
  // What the lines of a development module's log say behind time, process and path; the log is then removed.
  std::string Told(const std::string& relative) const {
    static const std::regex line("(?:[^;\r\n]*;){3}([^\r\n]*)\r\n");
    const std::string told = std::regex_replace(support::ReadFile(Path(relative)), line, "$1\n");
    std::filesystem::remove(Path(relative));
    return told;
  }
  std::string RemoteControl() const { return Told("Plugins/KELRCM.log"); }
  std::string Installer() const { return Told("Plugins/KEC.log"); }
};

// What a plug-in notes of being told a value.
std::string Noted(const std::string& function, const std::string& value) {
  return "KE_Initialize;0;6\n" + function + ";0;" + value + "\nKE_Finalize;0;\n";
}

}  // namespace

TEST_CASE("immediate update: a repetition, a pause or a result too many or too few") {
  const LauncherTree tree;
  const struct {
    const char* script;
    KE_RESULT result, resultEx;
    int pauses;
  } rows[] = {
      {"ExitCodes=0,1559,1559,0", 0, 0, 3},
      {"ExitCodes=0,1566", 0, KE_UPDATE_FAILED_1566, 1},
      {"ExitCodes=0,-3", 0, static_cast<KE_RESULT>(-3), 1},
      {"ExitCodes=1558", 0, KE_UPDATE_FAILED_1558, 0},
      {"ExitCodes=1565", 0, KE_UPDATE_FAILED_1565, 0},
      {"ExitCodes=5000", 0, KE_UPDATE_FAILED_5000, 0},
      {"ExitCodes=1567", 0, KE_UPDATE_FAILED_1567, 0},
      {"ExitCodes=1559", 0, 1559, 0},
      {"ExitCodes=-1", 0, 0, 0},
      {"Result=5", 5, 5, 0},
      {"Result=5\r\nExitCodes=1566", 5, KE_UPDATE_FAILED_1566, 0},
  };
  for (const auto& row : rows) {
    CAPTURE(std::string(row.script));
    std::string expected;
    for (int i = 0; i < row.pauses; ++i) expected += "20000 ";
    const std::string script = std::string(row.script) + "\r\n";
    support::WriteFile(tree.Path("Common/KELMNAPI.ini"), "[UpdateNow]\r\n" + script + "[UpdateNowEx]\r\n" + script);
    HeldTime::pauses.clear();
    CHECK((KE_UpdateNow() == row.result && HeldTime::pauses == expected));
    HeldTime::pauses.clear();
    CHECK((KE_UpdateNowEx(7, 8) == row.resultEx && HeldTime::pauses == expected));
    CHECK(GetModuleHandleA("KELMNAPI.dll") == nullptr);
  }
  std::filesystem::remove(tree.Path("Common/KELMNAPI.dll"));
  CHECK((KE_UpdateNow() == KE_LAUNCHER_NOT_LOADED && KE_UpdateNowEx(0, 0) == KE_LAUNCHER_NOT_LOADED));
}

TEST_CASE("immediate update: an exit code that the launcher leaves alone is read; a freed launcher is called") {
  const AgentTree tree;
  tree.AddFake("FakeKELMNAPI", "Common/KELMNAPI.dll");
  const support::LoadedDll fake(tree.Path("Common/KELMNAPI.dll"));
  static FakeLauncherState* const launcher = CALL(fake, FakeLauncher)();
  static int pauses;
  for (const auto update : {+[] { return KE_UpdateNow(); }, +[] { return KE_UpdateNowEx(1, 2); }}) {
    pauses = launcher->exitCode = 0;
    win::g_waiting.pause = [](DWORD) { launcher->exitCode = ++pauses == 1 ? 1559 : pauses < 9 ? 0 : 1; };
    CHECK((update() == KE_SUCCESS && pauses == 2));
    launcher->exitCode = 0;
    win::g_waiting.pause = [](DWORD) { siblings::FreeLauncher(); };
    CHECK(update() == KE_LAUNCHER_NOT_LOADED);
  }
}

TEST_CASE("component commands: one that is not run, or that fails") {
  const LauncherTree tree;
  CHECK(KE_AplyLocalRCMCfg() == KE_SUCCESS);
  const support::RecordedProgram report(tree, "KELREPORT/KELREPORT.exe"), config(tree, "KELCONF/KELCONF.exe");
  config.EndWith(9);
  report.EndWith(8);
  CHECK((KE_AplyLocalRCMCfg() == KE_SUCCESS && KE_SendReport() == KE_SUCCESS));
  CHECK((config.Lines() == "-LocalCfg -force\n" && report.Lines() == "-R -force\n"));
  CHECK(tree.Traced("KE_AplyLocalCfg;\"Could not Run KELCONF. KELCONF Run returned code :9\""));
  CHECK(tree.Traced("KE_SendReport;\"KelReport Run returned code :8)\""));
  // Only the report looks for the launcher in the module directory too.
  std::filesystem::rename(tree.Path("Common/KELMNAPI.dll"), tree.Path("KELUtils/KELMNAPI.dll"));
  CHECK((KE_SendReport() == KE_SUCCESS && KE_AplyLocalRCMCfg() == KE_SUCCESS));
  CHECK((report.Lines() == "-R -force\n" && config.Lines().empty()));
}

TEST_CASE("plug-ins: one that is not notified, or notified of another value") {
  const LauncherTree tree;
  CHECK((KE_NotifyDeviceID(0) == KE_STORE_UNUSABLE && KE_SetDeviceID("D-1") == KE_SUCCESS));
  CHECK(tree.RemoteControl() == Noted("KECONF_SetInfo", "6;D-1"));
  CHECK((tree.Installer() == Noted("KEINSTALL_SetInfo", "6;D-1") && KE_SetUserRCM("user") == KE_SUCCESS));
  CHECK((KE_SetPasswordRCM("secret") == KE_SUCCESS && KE_SetCustomerId("customer") == KE_SUCCESS));
  CHECK(tree.RemoteControl() == Noted("KECONF_SetInfo", "4;user") + Noted("KECONF_SetInfo", "5;***"));
  for (const int32_t target : {0, 1, 2, 3, -1}) {
    CAPTURE(target);
    CHECK(KE_NotifyDeviceID(target) == (target < 0 || target > 2 ? KE_MISSING_ARGUMENT : KE_SUCCESS));
    CHECK(tree.Installer() == (target == 0 || target == 1 ? Noted("KEINSTALL_SetInfo", "6;D-1") : ""));
    CHECK(tree.RemoteControl() == (target == 0 || target == 2 ? Noted("KECONF_SetInfo", "6;D-1") : ""));
  }
  CHECK((KE_SetDeviceID(std::string(37, 'd').c_str()) == KE_SUCCESS && KE_NotifyDeviceID(1) == KE_SUCCESS));
  CHECK((KE_SetDeviceID(std::string(38, 'd').c_str()) == KE_SUCCESS && KE_NotifyDeviceID(1) == KE_BUFFER_TOO_SMALL));
  CHECK(agent::NotificarUserRCM(nullptr) == KE_MISSING_ARGUMENT);
}

TEST_CASE("plug-ins: an unusable one is used, stays loaded or is not finalised") {
  const LauncherTree tree;
  CHECK(KE_SetDeviceID("D-1") == KE_SUCCESS);
  tree.Installer();
  tree.RemoteControl();
  // A plug-in that refuses the first mode is initialised with the second; one that refuses both is not usable.
  support::WriteFile(tree.Path("Plugins/KELRCM.ini"), "[PLUGIN]\r\nMode=1\r\n");
  CHECK(KE_NotifyDeviceID(2) == KE_SUCCESS);
  CHECK(tree.RemoteControl() == "KE_Initialize;2;6\nKE_Initialize;0;1\nKECONF_SetInfo;0;6;D-1\nKE_Finalize;0;\n");
  support::WriteFile(tree.Path("Plugins/KELRCM.ini"), "[PLUGIN]\r\nMode=2\r\n");
  CHECK(KE_NotifyDeviceID(2) == KE_MODULE_NOT_LOADED);
  CHECK(tree.RemoteControl() == "KE_Initialize;2;6\nKE_Initialize;2;1\n");
  // The two plug-ins in each other's place lack the function, but are finalised.
  support::WriteFile(tree.Path("Plugins/KELRCM.ini"), "");
  tree.UsePlugins(tree / "Plugins\\KEC.dll", tree / "Plugins\\KELRCM.dll");
  CHECK((KE_NotifyDeviceID(2) == KE_MODULE_NOT_LOADED && tree.Installer() == "KE_Initialize;0;6\nKE_Finalize;0;\n"));
  CHECK(KE_NotifyDeviceID(0) == KE_INSTALLER_PLUGIN_UNUSABLE);
  // A full path with slashes is a usable one. What is not full is refused, although the plug-in is there.
  tree.UsePlugins(tree.Path("Plugins/KELRCM.dll").generic_string(), "");
  CHECK(KE_NotifyDeviceID(2) == KE_SUCCESS);
  const support::CurrentFolder current(tree.Path("Plugins"));
  const std::string rooted = (tree / "Plugins\\KELRCM.dll").substr(2);
  for (const char* path :
       {"", "KELRCM.dll", "..\\Plugins\\KELRCM.dll", "C:KELRCM.dll", rooted.c_str(), "C:\\none\\none.dll"}) {
    tree.UsePlugins(path, path);
    CHECK((KE_NotifyDeviceID(1) == KE_INSTALLER_PLUGIN_UNUSABLE && KE_NotifyDeviceID(2) == KE_MODULE_NOT_LOADED));
    CHECK(KE_SetDeviceID("D-1") == KE_SUCCESS);
  }
  CHECK((GetModuleHandleA("KEC.dll") == nullptr && GetModuleHandleA("KELRCM.dll") == nullptr));
}

TEST_CASE("update settings: a value at another place, or a file that is created on demand") {
  const LauncherTree tree;
  char buffer[8] = "before";
  const auto get = [&](const char* fallback, int32_t size) {
    return KE_GetUpdateNowConfig("S", "K", fallback, buffer, size) == KE_SUCCESS ? buffer : std::string();
  };
  CHECK((KE_SetUpdateNowConfig("S", "K", "v", 1) == 0 && !std::filesystem::exists(tree.Path("KesLpmng/UPDNW.DAT"))));
  CHECK((get("none", 0) == "before" && get("none", 8) == "none"));
  CHECK((KE_SetUpdateNowConfig("S", "K", "a long value", 0) == 0 && KE_SetUpdateNowConfig("S", "L", "x", 1) == 0));
  CHECK((get("", 8) == "a long " && KE_SetNoCheckAVValue(-5) == KE_SUCCESS));
  CHECK(support::ReadFile(tree.Path("KesLpmng/UPDNW.DAT")) == "[S]\r\nK=a long value\r\nL=x\r\n");
  CHECK(support::ReadFile(tree.Path("KelUpg/KelUpg.ini"))
            .ends_with("[GENERAL]\r\nNoCheckAV=-5\r\n[KEC]\r\nInstallWithOtherProducts=-5\r\n"));
}

TEST_CASE("agent programs: one in its second place is not found, or waited for without end") {
  const AgentTree tree;
  CHECK(KE_LaunchKEPWInst() == KE_INSTALL_HELPER_NOT_STARTED);
  const support::RecordedProgram second(tree, "KELUtils/KepWInst.exe");
  CHECK((KE_LaunchKEPWInst() == KE_SUCCESS && second.LateLines() == "-FORCE\n"));
  CHECK(upgrade::IntegrateComputerKelTest() == KE_PROGRAM_NOT_STARTED);
  const support::RecordedProgram manager(tree, "KesLpmng/KEPLPMNG.exe");
  const trace::TraceScope scope;
  manager.EndWith(3);
  CHECK((upgrade::IntegrateComputerKelTest() == KE_SUCCESS && HeldTime::waited == 180000));
  HeldTime::inTime = false;
  CHECK(upgrade::IntegrateComputerKelTest() == KE_SUCCESS);
  CHECK(tree.Traced("IntegrateComputerKelTest;\"Integration KelTest not finished\""));
  CHECK(manager.LateLines(2) == "KELTest -FORCE \nKELTest -FORCE \n");
}
