// kelctl.exe against the real library in a product tree.
#include <doctest/doctest.h>

#include <string>

#include "support/product_tree.h"

namespace {

struct Tool {
  support::ProgramRun Run(const std::string& arguments, const std::string& dll = "KELUtils/KELUtils.dll") const {
    return support::RunProgram("\"" + (support::BuildFolder() / "bin" / "kelctl.exe").string() + "\" --dll \"" +
                               tree.Path(dll).string() + "\" " + arguments);
  }
  support::ProductTree tree;
};

}  // namespace

TEST_CASE("kelctl: what a command line prints, and how it ends") {
  constexpr unsigned kUsage = 1;
  const struct {
    const char* arguments;
    unsigned exitCode;
    const char* output;  // all of it after a success, else a part
  } rows[] = {
      {"can-run keltvevt", 0, "yes\n"},
      {"can-run other", 1, "no\n"},
      {"plugin add K KELUtils v", 0, ""},
      {"plugin remove K KELUtils", 0, ""},
      {"plugin add K KELUtils \"a\nb\"", kUsage, "line break"},
      {"version set a=b 1", kUsage, "key"},
      {"subscribe KEC 101", 1, "KE_AddPolicyTypeSuscription failed with 1782"},
      {"init ..\\none\\none", 1, "KE_InitializeSystem failed with 1782"},
      {"set agent-id A-1", 0, ""},
      {"get agent-id", 0, "A-1\n"},
      {"set container -- -x", 0, ""},
      {"get container", 0, "-x\n"},
      {"get device-id", 1, "KE_GetDeviceID failed with 1782 KE_STORE_UNUSABLE: a store or settings file"},
      {"set certificate MIIB", 0, ""},
      {"get certificate", 0, "********\n"},
      {"get certificate --reveal", 0, "MIIB\n"},
      {"set install-state 200", 0, ""},
      {"set install-state 7 --only-forward", 0, ""},
      {"get install-state", 0, "200\n"},
      {"get install-complete", 0, "yes\n"},
      {"get integrated", 0, "no\n"},
      {"set property:Site Madrid", 0, ""},
      {"password set secret", 0, ""},
      {"password check secret", 0, "the password matches\n"},
      {"password check Secret", 1, "the password does not match\n"},
      {"proxy set h 3128 --user u --password s\xE9", 0, ""},
      {"proxy show", 0, "host      h\nport      3128\nuser      u\npassword  ********\n"},
      {"proxy set h:1", kUsage, "a host alone"},
      {"server set https://s --secure", 0, ""},
      {"server set https://s", 0, ""},
      {"jobs period 9 60 KELUPD", 1, "KE_SetPeriodicTask failed with 1786 KE_SCHEDULER_NOT_STARTED"},
      {"jobs window 9 60 12:00 24:00 KELUPD", kUsage, "24:00 is out of range"},
      {"jobs next-boot \"a\\\"b\"", kUsage, "double quote"},
      {"jobs list", 2, "cannot start "},
      {"update config set UPDATE SOURCE server --only-if-exists", 0, ""},
      {"update config get UPDATE SOURCE", 0, "\n"},
      {"update now --values 1 2", 1, "KE_UpdateNowEx failed with 1799 KE_LAUNCHER_NOT_LOADED"},
      {"notify installer", 1, "KE_NotifyDeviceID failed with 1782"},
      {"launch report", 0, ""},
      {"prompt reboot", 0, "later\n"},
      {"prompt countdown -5", 1, "KE_ShowRebootCountDown failed with 1798 KE_PROMPT_FAILED"},
      {"prompt ask 7", kUsage, "SECONDS"},
      {"prompt install --reboot-msg 4294967295", 0, ""},
      {"prompt hide", 0, ""},
      {"upgrade start absent", kUsage, "no such folder: absent"},
      {"get property:Site", 0, "Madrid\n"},
      {"shwo", kUsage, "no such command: shwo; did you mean \"show\"?"},
      {"examine-sibling", kUsage, "no such command: examine-sibling; kelctl --help lists the commands"},
      {"explain ke_store_unusable", 0,
       "1782 KE_STORE_UNUSABLE: a store or settings file cannot be opened or written, or a value is missing\nwhat to "
       "do: "
       "kelctl doctor; getter: the value was never stored or the store is damaged; setter: rights, full disk, a "
       "program "
       "that holds the file\n"},
      {"explain 5", 0, "5 (unnamed): a code this kelctl does not know\nwhat to do: read the log: kelctl log\n"},
      {"explain x", kUsage, "neither a result code"},
      {"log level x", kUsage, "not a decimal number"},
      {"log level 20", 0, "20\n"},
      {"--trace get agent-id", 0, "A-1\n"},
      {"--dll", kUsage, "required"},
      {"get agent", kUsage, "no value \"agent\"; the names are agent-id, "},
      {"set integrated 1", kUsage, "integrated is read only"},
      {"set install-state 2147483648", kUsage, "2147483648 is out of range"},
      {"set last-install-error 12x", kUsage, "\"12x\" is not a decimal number"},
      {"set container \"a\n[B]\"", kUsage, "line break"},
      {"set property:a=b 1", kUsage, "key"},
      {"event describe 105 P", 0, "Another security product has to be removed first: P.\n"},
      {"event describe 403", 0, "The quarantine is full.\n"},
      {"event scan KEC T-1 7", 0, ""},
      {"event reboot KEC", 0, ""},
      {"event error 4 3 401", 0, ""},
      {"event error 4 3 404", 1, "KE_GenerateEvent failed with 1803 KE_EVENT_NOT_SENT"},
      {"event start", 1, "KE_InitEventSystem failed with 1802"},
      {"policy add startup run.cmd", 0, ""},
      {"policy add shutdown run.cmd \"/a \\\"b\\\"\"", 0, ""},
      {"policy remove shutdown /a", 0, ""},
      {"policy list", 0,
       "startup   scripts.ini  local  run.cmd\nstartup   scripts      local  run.cmd\n"
       "startup   state        local  run.cmd\nshutdown  scripts.ini  local  run.cmd  /a \"b\"\n"
       "shutdown  scripts      local  run.cmd  /a \"b\"\nshutdown  state        local  run.cmd  /a \"b\"\n"},
      {"policy remove shutdown \"/a \\\"b\\\"\"", 0, ""},
      {"policy remove startup \"\"", kUsage, "the text is empty"},
      {"policy add boot run.cmd", kUsage, "\"boot\" is neither startup nor shutdown"},
  };
  const Tool tool;
  tool.tree.AddDevkit("KELAGAPI.dll", "Common");
  tool.tree.AddDevkit("KePIRes.exe", "KESAgent");
  support::WriteFile(tool.tree.Path("KESAgent/KePIRes.ini"), "[AUTO]\r\nAnswer=2\r\nCountDown=9\r\nInstallation=0\r\n");
  tool.tree.AddDevkit("TvEvAPI.dll", "KELTVEVT");
  for (const auto& row : rows) {
    CAPTURE(std::string(row.arguments));
    const auto run = tool.Run(row.arguments);
    CHECK(run.exitCode == row.exitCode);
    if (row.exitCode == 0) CHECK(run.output == row.output);
    CHECK(run.output.find(row.output) != std::string::npos);
  }
  CHECK(tool.Run("init --reboot-required \"" + (tool.tree / "Common") + "\"").exitCode == 0);
  CHECK(std::filesystem::exists(tool.tree.Path("Common/KELUPG/KELUPG.INI")));
  const auto upgrade = tool.Run("upgrade start \"" + tool.tree.Path("KESAgent").parent_path().string() + "\"");
  CHECK(upgrade.output.find("KE_UpgradeStart failed with 1782") != std::string::npos);  // not all folders are there
  const std::string messages = support::ReadFile(tool.tree.Path("KESAgent/KE_AGPRX.dat"));
  CHECK(messages.find("SERVER=https://s\r\n") != std::string::npos);
  CHECK(messages.find("KE_AGM_NETINFO=1009\r\n") != std::string::npos);
  const std::string events = support::ReadFile(tool.tree.Path("KELTVEVT/events.jsonl"));
  for (const char* part :
       {R"("product":"KEC")", R"("status":7,"taskId":"T-1")", R"("TEVT_RebootForced")", R"("class":4,)",
        R"("text":null,"description":"The scan  could not be started.","source":3,)"})
    CHECK_MESSAGE(events.find(part) != std::string::npos, part);
  const std::string shown = tool.Run("show").output;
  CHECK(shown.find("agent-id            A-1\n") != std::string::npos);
  CHECK(shown.find("device-id           (no value: 1782 KE_STORE_UNUSABLE)\n") != std::string::npos);
  CHECK(shown.find("certificate         ********\n") != std::string::npos);
  CHECK(tool.Run("proxy inet --json --reveal").output.find("\"password\": \"s\xC3\xA9\"\n") != std::string::npos);
  const std::string json = tool.Run("show --json").output;
  CHECK(json.find("\"install-state\": {\n    \"value\": 200,\n    \"result\": 0\n") != std::string::npos);
  CHECK(tool.Run("policy list --json").output.find("\"scripts\": [\n    {\n      \"kind\": \"startup\"") !=
        std::string::npos);
  for (const char* path : {"Scripts\\Startup", "State\\Machine\\Scripts\\Startup"}) {
    const auto key = std::string("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Group Policy\\") + path;
    CHECK(RegDeleteTreeA(HKEY_LOCAL_MACHINE, key.c_str()) == ERROR_SUCCESS);
  }
  std::filesystem::remove_all(std::filesystem::path(std::getenv("SystemRoot")) / "Sysnative" / "GroupPolicy");
}

TEST_CASE("kelctl: says what is wrong with the library or the store") {
  Tool tool;
  support::WriteFile(tool.tree.Store("INTEGRA.DAT"), "TVKE0123456789abcdef");
  std::filesystem::remove(tool.tree.Path("KELUtils/ApiCr.dll"));
  CHECK(tool.Run("show").exitCode == 1);
  CHECK(tool.Run("get container").output.find("1783 KE_CRYPTO_NOT_LOADED") != std::string::npos);
  CHECK(tool.Run("get container", "absent.dll").exitCode == 2);
}

TEST_CASE("kelctl: sees the true release of Windows, which Windows hides from programs without a manifest") {
  constexpr char kKey[] = "Software\\Wine\\AppDefaults\\kelctl.exe";
  CHECK(RegSetKeyValueA(HKEY_CURRENT_USER, kKey, "Version", REG_SZ, "win10", 6) == ERROR_SUCCESS);
  CHECK(Tool().Run("os").output.starts_with("Microsoft Windows 10 "));
  CHECK(RegDeleteTreeA(HKEY_CURRENT_USER, kKey) == ERROR_SUCCESS);
}
