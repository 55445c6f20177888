#include <doctest/doctest.h>

#include <cstring>
#include <string>

#include "exports/store_tree.h"

using support::LoadedDll;

namespace {

using Getter = KE_RESULT(KE_API*)(char*, int32_t);
using Setter = KE_RESULT(KE_API*)(const char*);

struct TextValue {
  const char* getter;
  const char* setter;
  const char* traced;  // the name the getter traces under
  const char* section;
  const char* key;
  KE_RESULT missing;  // what a getter answers without a value
  bool empties;       // whether it empties the buffer then
  KE_RESULT noSize;   // what it answers to size 0 without a value
  bool emptyRefused;  // whether the setter refuses the empty text
};

// Pins every export to its place in the store and to its way of answering.
constexpr TextValue kTexts[] = {
    {"KE_GetAgentID", "KE_SetAgentID", "KE_GetAgentID", "AGENT", "ID", 1782, false, 1782, true},
    {"KE_GetCustomerId", "KE_SetCustomerId", "KE_GetCustomerId", "INTEGRATION", "CUSTOMER", 1782, false, 1782, false},
    {"KE_GetCertificate", "KE_SetCertificate", "KE_GetCertificate", "INTEGRATION", "CERTIFICATE", 1782, false, 1782,
     false},
    {"KE_GetDeviceID", "KE_SetDeviceID", "KE_GetDeviceID", "INTEGRATION", "DEVICEID", 1782, true, 1778, false},
    {"KE_GetUserRCM", "KE_SetUserRCM", "KE_GetUserRCM", "AGENTRCM", "USER", 1782, true, 1778, false},
    {"KE_GetPasswordRCM", "KE_SetPasswordRCM", "KE_GetPasswordRCM", "AGENTRCM", "PASSWORD", 1782, true, 1778, false},
    {"KE_GetAgentVersion", "KE_SetAgentVersion", "KE_GetAgentVersion", "AGENT", "VERSION", 0, true, 1778, true},
    {"KE_GetServerDate", "KE_SetServerDate", "KE_GetServerDate", "INTEGRATION", "ServerDate", 0, true, 1778, true},
    {"KE_GetContainer", "KE_SetContainer", "KE_GetContainer", "INTEGRATION", "CONTAINER", 0, true, 1778, true},
    {"KE_GetLastErrorParam", "KE_SetLastErrorParam", "KE_GetLastInstallErrorEx", "INSTALL", "LastErrorParam", 0, true,
     1777, false},
};

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

std::string StoreText(const char* section, const char* key, const std::string& value) {
  return "[" + std::string(section) + "]\r\n" + key + "=" + value + "\r\n";
}

}  // namespace

TEST_CASE("text accessors: a value goes to its key and comes back, when the buffer has room for its terminator") {
  for (const TextValue& row : kTexts) {
    CAPTURE(std::string(row.getter));
    const StoreTree tree;
    const LoadedDll dll = tree.Load();
    const auto get = dll.Get<Getter>(row.getter);
    std::string value(5000, 'x');  // and every character but the line breaks, which a store does not keep
    for (int c = 1; c < 256; ++c) value += c == '\r' || c == '\n' ? ' ' : static_cast<char>(c);
    REQUIRE(dll.Get<Setter>(row.setter)(value.c_str()) == KE_SUCCESS);
    CHECK(tree.Text("INTEGRA.DAT") == StoreText(row.section, row.key, value));
    CHECK(tree.Text("INTEGRA.BAK") == tree.Text("INTEGRA.DAT"));

    static char buffer[6000];
    std::strcpy(buffer, "untouched");
    const auto length = static_cast<int32_t>(value.size());
    CHECK(get(buffer, length) == KE_BUFFER_TOO_SMALL);
    CHECK(std::string(buffer) == "untouched");
    CHECK(get(buffer, length + 1) == KE_SUCCESS);
    CHECK(buffer == value);
    std::memset(buffer, 0, sizeof buffer);
    CHECK(tree.Load().Get<Getter>(row.getter)(buffer, sizeof buffer) == KE_SUCCESS);  // as another process reads it
    CHECK(buffer == value);
  }
}

TEST_CASE("text accessors: each getter's answer to a missing value, and each setter's to null and empty texts") {
  for (const TextValue& row : kTexts) {
    CAPTURE(std::string(row.getter));
    const StoreTree tree;
    const LoadedDll dll = tree.Load();
    const auto get = dll.Get<Getter>(row.getter);
    const auto set = dll.Get<Setter>(row.setter);
    char buffer[16] = "untouched";
    CHECK(get(nullptr, -1) == KE_MISSING_ARGUMENT);
    for (const int32_t size : {0, -1, INT32_MIN}) CHECK(get(buffer, size) == row.noSize);
    CHECK(std::string(buffer) == "untouched");
    CHECK(get(buffer, 1) == row.missing);
    CHECK(std::string(buffer) == (row.empties ? "" : "untouched"));

    const bool nullRefused = std::strcmp(row.setter, "KE_SetLastErrorParam") != 0;
    CHECK(set(nullptr) == (nullRefused ? KE_MISSING_ARGUMENT : KE_SUCCESS));
    CHECK(set("") == (row.emptyRefused ? KE_MISSING_ARGUMENT : KE_SUCCESS));
    CHECK(tree.Text("INTEGRA.DAT") == (row.emptyRefused ? "" : StoreText(row.section, row.key, "")));
  }
}

TEST_CASE("number accessors: stored in decimal, read leniently") {
  const StoreTree tree;
  int32_t value = INT32_MIN;
  CHECK(CALL(tree.Load(), KE_SetLastInstallError)(&value) == KE_SUCCESS);
  CHECK(tree.Text("INTEGRA.DAT") == "[INSTALL]\r\nLastError=-2147483648\r\n");
  CHECK(CALL(tree.Load(), KE_GetInstallState)(&value) == KE_SUCCESS);
  CHECK(value == 0);
  CHECK(CALL(tree.Load(), KE_GetLastInstallError)(&value) == KE_SUCCESS);
  CHECK(value == INT32_MIN);
  using Row = std::pair<const char*, int32_t>;
  for (const auto& [text, number] : {Row{" +48x", 48}, Row{"-3", -3}, Row{"x48", 0}, Row{"99999999999", INT32_MAX}}) {
    CAPTURE(text);
    tree.Put("INTEGRA.DAT", StoreText("install", "state", text));
    CHECK(CALL(tree.Load(), KE_GetInstallState)(&value) == KE_SUCCESS);
    CHECK(value == number);
  }
}

TEST_CASE("install state: moves back only when that is not forbidden, and is complete from 200 on") {
  const StoreTree tree;
  const LoadedDll dll = tree.Load();
  int32_t value = -1;
  CHECK(CALL(dll, KE_SetInstallState)(&value, 1) == KE_SUCCESS);
  CHECK(tree.Text("INTEGRA.DAT").empty());  // nothing stored, not even an empty entry
  CHECK(CALL(dll, KE_SetAgentVersion)("1") == KE_SUCCESS);
  CHECK(tree.Text("INTEGRA.DAT") == "[AGENT]\r\nVERSION=1\r\n");

  struct Step {
    int32_t state, onlyForward, stored, complete;
  };
  const Step steps[] = {{48, 1, 48, 0}, {47, 1, 48, 0},   {200, 1, 200, 1},
                        {47, 0, 47, 0}, {199, 0, 199, 0}, {-1, 0, -1, 0}};
  for (const Step& step : steps) {
    CAPTURE(step.state);
    CHECK(CALL(dll, KE_SetInstallState)(&step.state, step.onlyForward) == KE_SUCCESS);
    CHECK(CALL(dll, KE_GetInstallState)(&value) == KE_SUCCESS);
    CHECK(value == step.stored);
    CHECK(CALL(dll, KE_IsInstallComplete)(&value) == KE_SUCCESS);
    CHECK(value == step.complete);
  }
}

TEST_CASE("property: appended to its section, changed in place, the first of a name only") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", "[Integration]\r\nDate=d\r\n[A]\r\n[B]\r\n[INTEGRATION]\r\ndate=second\r\n");
  const LoadedDll dll = tree.Load();
  const auto set = CALL(dll, KE_SetPropertyInIntegra);
  CHECK(set("NEW", "n") == KE_SUCCESS);
  CHECK(set("DATE", "e") == KE_SUCCESS);
  CHECK(set("LINES", "a\r\n[FORGED]\r\nID=x") == KE_SUCCESS);
  CHECK(tree.Text("INTEGRA.DAT") ==
        "[Integration]\r\nDate=e\r\nNEW=n\r\nLINES=a[FORGED]ID=x\r\n[A]\r\n[B]\r\n[INTEGRATION]\r\ndate=second\r\n");
  CHECK(set("", "x") == KE_MISSING_ARGUMENT);
  CHECK(set("K", "") == KE_MISSING_ARGUMENT);
}

TEST_CASE("unusable store files: outputs stay as they were, and so does the file") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", WholeStore("live"));
  const LoadedDll cached = tree.Load();
  CHECK(AgentId(cached) == "live");
  const support::LockedFile readOnly(tree.tree.Store("INTEGRA.DAT"), FILE_SHARE_READ);
  CHECK(CALL(cached, KE_SetAgentID)("new") == KE_STORE_UNUSABLE);
  const LoadedDll dll = tree.Load();
  CHECK(AgentId(dll) == "(1782)");
  int32_t value = -7;
  CHECK(CALL(dll, KE_GetInstallState)(&value) == KE_STORE_UNUSABLE);
  CHECK(CALL(dll, KE_IsIntegrated)(&value) == KE_STORE_UNUSABLE);
  CHECK(value == -7);
  CHECK(CALL(dll, KE_IsInstallComplete)(&value) == KE_STORE_UNUSABLE);
  CHECK(value == 0);
  CHECK(tree.Text("INTEGRA.DAT") == WholeStore("live"));
}

TEST_CASE("tracing: every export writes its start and end under its name, and between them one line for a failure") {
  const StoreTree tree;
  tree.tree.AddDevkit("TvLogSys.dll", "Common");
  support::WriteFile(tree.tree.Path("KELUtils/KELUTILS.INI"), "[LOG]\r\nLEVELLOG=20\r\n");
  const LoadedDll dll = tree.Load();
  const auto check = [&](const std::string& name, KE_RESULT result) {
    CAPTURE(name);
    const std::string lines = support::ReadFile(tree.tree.Path("KELUtils/KELUtils.log"));
    std::filesystem::remove(tree.tree.Path("KELUtils/KELUtils.log"));
    const std::string code = std::to_string(result), who = ";KELUtils;" + name + ";\"";
    const std::string wrong = ";20" + who + "Wrong parameters\"",
                      error = ";20" + who + "Error (" + code + ") return by function (" + name + ")\"";
    const bool wrongParameters = result == 1777 || result == 1778 || result == 1789;
    CHECK(lines.find(";10" + who + "Function start\"") != std::string::npos);
    CHECK(lines.find(";10" + who + "Function end. Return code (" + code + ")\"") != std::string::npos);
    CHECK(Count(lines, wrong) == (wrongParameters ? 1 : 0));
    CHECK(Count(lines, error) == (result != 0 && !wrongParameters ? 1 : 0));
  };
  for (const TextValue& row : kTexts) {
    check(row.traced, dll.Get<Getter>(row.getter)(nullptr, 0));
    check(row.setter, dll.Get<Setter>(row.setter)("x"));
  }
  for (const char* name : {"KE_GetInstallState", "KE_GetLastInstallError", "KE_IsInstallComplete", "KE_IsIntegrated"}) {
    check(name, dll.Get<decltype(&KE_GetInstallState)>(name)(nullptr));
  }
  check("KE_SetPropertyInIntegra", CALL(dll, KE_SetPropertyInIntegra)(nullptr, nullptr));
  check("KE_SetLastInstallError", CALL(dll, KE_SetLastInstallError)(nullptr));
  check("KE_SetInstallState", CALL(dll, KE_SetInstallState)(nullptr, 0));
  check("KE_Integrate", CALL(dll, KE_Integrate)(nullptr));
  check("KE_DeIntegrate", CALL(dll, KE_DeIntegrate)());
  check("KE_EncryptSetting", CALL(dll, KE_EncryptSetting)(nullptr, 0, nullptr, nullptr));
  check("KE_GetPasswordRCM", CALL(dll, KE_GetPasswordRCMDec)(nullptr, 0));
  for (const char* name : {"KE_DecryptSetting", "KE_GetUninstallPass", "KE_GetUninstallPassEx"}) {
    check(name, dll.Get<Getter>(name)(nullptr, 0));
  }
  check("KE_GetEncryptedFileValue", CALL(dll, KE_GetEncryptedFileValue)(nullptr, nullptr, nullptr, 0, nullptr));
  check("KE_SetEncryptedFileValue", CALL(dll, KE_SetEncryptedFileValue)(nullptr, nullptr, nullptr, nullptr));
  check("KE_InitializeSystem", CALL(dll, KE_InitializeSystem)(nullptr));
  check("KE_InitializeSystemEx", CALL(dll, KE_InitializeSystemEx)("", nullptr));
  check("KE_UTIL_AddPlugin", CALL(dll, KE_AddPlugin)("K", "", "v"));
  check("KE_RemovePlugin", CALL(dll, KE_RemovePlugin)("", "H"));
  check("KE_UTIL_SetVersion", CALL(dll, KE_SetVersion)("K", nullptr));
  check("KE_AddPolicyTypeSuscription", CALL(dll, KE_AddPolicyTypeSuscription)(nullptr, "1"));
  check("KE_RemovePolicyTypeSuscription", CALL(dll, KE_RemovePolicyTypeSuscription)("K", ""));
  check("KE_CanRunCommand", CALL(dll, KE_CanRunCommand)("K", nullptr));
  check("KE_SetUninstallPass", CALL(dll, KE_SetUninstallPass)("x", 0));
  for (const char* name : {"KE_SetURLServer", "KE_UpgradeStart"}) check(name, dll.Get<Setter>(name)(nullptr));
  check("KE_CheckInstallationPassw", CALL(dll, KE_CheckInstallationPassw)("x", 1) == 1 ? 0 : 1);
  check("KE_GetConfiguratedProxy", CALL(dll, KE_GetConfiguratedProxy)(nullptr));
  check("KE_SetAgentProxyInfo", CALL(dll, KE_SetAgentProxyInfo)(nullptr, nullptr, nullptr, nullptr));
  check("KE_SetStaticProxyInfo", CALL(dll, KE_SetStaticProxyInfo)(nullptr, nullptr));
  check("KE_INSTALL_GetInetConfig", CALL(dll, KE_GetInetConfig)(nullptr, 0));
  struct Plain {
    const char *exported, *traced;
  };
  for (const auto& [exported, traced] :
       {Plain{"KE_SendReport", "KE_SendReport"}, Plain{"KE_AplyLocalRCMCfg", "KE_AplyLocalCfg"},
        Plain{"KE_UpdateNow", "KE_UpdateNow"}, Plain{"KE_LaunchKEPWInst", "LaunchKEPWinst"},
        Plain{"KE_ScheduleDefaultTasks", "KE_ScheduleDefaultTasks"}}) {
    check(traced, dll.Get<decltype(&KE_SendReport)>(exported)());
  }
  check("KE_UpdateNowEx", CALL(dll, KE_UpdateNowEx)(0, 0));
  check("KE_GetUpdateNowConfig", CALL(dll, KE_GetUpdateNowConfig)("S", "K", "", nullptr, 0));
  check("KE_SetUpdateNowConfig", CALL(dll, KE_SetUpdateNowConfig)("S", "K", "", 1));
  check("KE_SetNoCheckAVValue", CALL(dll, KE_SetNoCheckAVValue)(1));
  check("KE_NotifyDeviceID", CALL(dll, KE_NotifyDeviceID)(-1));
  check("KE_SetTask", CALL(dll, KE_SetTask)(nullptr, nullptr, nullptr, 0, nullptr, nullptr));
  check("KE_SetPeriodicTask", CALL(dll, KE_SetPeriodicTask)(nullptr, nullptr, nullptr, 0, 0, 0));
  check("KE_SetPeriodicTaskEx", CALL(dll, KE_SetPeriodicTaskEx)(nullptr, nullptr, 0, 0, 0, 0, 0));
  check("KE_SetPeriodicTaskRangeDate", CALL(dll, KE_SetPeriodicTaskRangeDate)(nullptr, nullptr, 0, 0, 0, 0, nullptr));
  check("KE_ScheduleTaskReboot", CALL(dll, KE_ScheduleTaskReboot)(nullptr, 0, nullptr));
  check("KE_RemoveScheduleTaskReboot", CALL(dll, KE_RemoveScheduleTaskReboot)(0));
  check("KE_UpgradeComplete", CALL(dll, KE_UpgradeComplete)(1, nullptr));
  check("KE_ScheduleUpgradeComplete", CALL(dll, KE_ScheduleUpgradeComplete)(1, nullptr));
  check("KE_ScanStateEvent", CALL(dll, KE_ScanStateEvent)(nullptr, nullptr, 0));
  for (const char* name : {"KE_RebootForcedEvent", "KE_Uninstall"}) check(name, dll.Get<Setter>(name)(nullptr));
  check("KE_GenerateEvent", CALL(dll, KE_GenerateEvent)(4, 0, 1, nullptr));
  check("KE_GetEventDescription", CALL(dll, KE_GetEventDescription)(1, nullptr, 0, nullptr));
  check("KE_InitEventSystem", CALL(dll, KE_InitEventSystem)());
  check("KE_IsNeededInstallationPassw", CALL(dll, KE_IsNeededInstallationPassw)() == 1 ? 0 : 1);
  for (const char* name : {"KE_ShowInstallDialog", "KE_HideInstallDialog", "KE_HideInstalationGuide"}) {
    check(name, dll.Get<decltype(&KE_ShowInstallDialog)>(name)());
  }
  for (const char* name : {"KE_ShowRebootCountDown", "KE_ShowInstallDialogEx"}) {
    check(name, dll.Get<decltype(&KE_ShowRebootCountDown)>(name)(1));
  }
  check("KE_GetCanReboot", CALL(dll, KE_GetCanReboot)(nullptr));
  check("KE_GetCanRebootEx", CALL(dll, KE_GetCanRebootEx)(nullptr, 0));
  check("KE_GetUserResponse", CALL(dll, KE_GetUserResponse)(nullptr, 1, 1));
  check("KE_GetUUID", CALL(dll, KE_GetUUID)(nullptr, 0));
}
