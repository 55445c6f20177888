#include <doctest/doctest.h>

#include <functional>
#include <optional>
#include <string>
#include <tuple>

#include "exports/store_tree.h"
#include "registration/texts.h"

using support::LoadedDll;

namespace {

// The files of an installation, in the order in which they are written.
constexpr const char* kFiles[] = {"Scheduler/Config/tokens.tok", "KESLPMNG/Config/plugins.tok", "KESWD/KesWD.conf",
                                  "KELCONF/KELCONF.INI",         "KELUPD/KELUPD.INI",           "KELUPG/KELUPG.INI"};

// What an installation below `root` holds, in one text.
std::string Installed(const support::Folder& root) {
  std::string text;
  for (const char* file : kFiles) text += support::ReadFile(root.Path(file));
  return text;
}

// A tree with the folders of the modules that host plug-ins, and the DLL in it.
struct RegistrationTree : StoreTree {
  RegistrationTree() {
    for (const char* host : {"KELUpg", "KELUpd", "KELConf"}) std::filesystem::create_directory(tree.Path(host));
  }
  std::string Ini(std::string module) const { return support::ReadFile(tree.Path(module + "/" + module + ".ini")); }
  const LoadedDll dll = Load();
};

}  // namespace

TEST_CASE("initialisation: a file with another text, also in a second run, or written behind a failure") {
  const RegistrationTree with;
  const support::Folder root;
  const std::string path = root / "";
  const auto initialise = CALL(with.dll, KE_InitializeSystem);
  CHECK((initialise("\\") == KE_MISSING_ARGUMENT && root.FileCount() == 0));
  CHECK(initialise((path + "\\").c_str()) == KE_SUCCESS);  // one backslash is dropped, the other one counts
  REQUIRE(initialise(path.c_str()) == KE_SUCCESS);
  const std::string bare = path.substr(0, path.size() - 1), first = Installed(root);
  std::string expected =
      "[SERVICES]\r\nKesAgent=\"@KesAgent\\KesAgent.exe\"\r\nZumAt3Scheduler=\"@Scheduler\\ZumSched.exe\"\r\n"
      "ZumKesLpMng=\"@KesLpMng\\KesLpMng.exe\"\r\n"
      "[PLUGINS]\r\nKELSYSCF=\"@KELSYSCF\\KELSYSCF.dll\"\r\nKELTASK=\"@KELTASK\\KELTASK.dll\"\r\n"
      "[PLUGINS]\r\nKEAGENT=\"@KELSYSUD\\KelSysUd.dll\"\r\n[PLUGINS]\r\nKEAGENT=\"@KELSYSIN\\KelSysIn.dll\"\r\n";
  for (size_t at; (at = expected.find('@')) != std::string::npos;) expected.replace(at, 1, path);
  CHECK(first == registration::SchedulerTokens(bare) + registration::PluginTokens(bare) + expected);
  for (const char* folder : {"KELSYSCF", "KELTASK", "KELSYSUD", "KELSYSIN", "KesAgent", "KEPWINST"})
    CHECK(std::filesystem::is_directory(root.Path(folder)));
  CHECK((initialise(bare.c_str()) == KE_SUCCESS && Installed(root) == first));

  for (const char* blocked : kFiles) {
    const support::Folder other;
    std::filesystem::create_directories(other.Path(blocked));
    CHECK(initialise((other / "").c_str()) == KE_STORE_UNUSABLE);
    bool before = true;
    for (const char* file : kFiles)
      CHECK(std::filesystem::is_regular_file(other.Path(file)) == (before = before && file != blocked));
  }
}

TEST_CASE("initialisation: another key is lost, a plug-in not registered again, or a pending reboot not noted") {
  const RegistrationTree with;
  const support::Folder root;
  const std::string path = root / "", protection = with.tree / "Protection";
  const auto initialise = CALL(with.dll, KE_InitializeSystemEx);
  with.tree.AddFake("FakeKERegister", "Protection/KERegister.dll");
  with.tree.AddFake("FakeApiCr", "Incomplete/KERegister.dll");
  std::optional<LoadedDll> plugin(with.tree.Path("Protection/KERegister.dll"));
  const support::CurrentFolder current(with.tree.Path(""));
  // The third and the fourth are not full paths, though they lead there.
  for (const std::string& directory : {protection, protection + "/", std::string("Protection"), protection.substr(2),
                                       with.tree / "Incomplete", with.tree / "Missing", std::string()}) {
    RegSetKeyValueA(HKEY_LOCAL_MACHINE, "Software\\Tavrin Security\\Orvane\\Protections", directory.c_str(), REG_SZ,
                    directory.c_str(), static_cast<DWORD>(directory.size()));
  }
  std::filesystem::create_directory(root.Path("KESWD"));
  support::WriteFile(root.Path("KESWD/KesWD.conf"), "[OTHER]\r\nA=1\r\n[SERVICES]\r\nMine=2\r\n");
  for (const char* other : {"TRUE ", "", "1"}) CHECK(initialise(path.c_str(), other) == KE_SUCCESS);
  CHECK(support::ReadFile(root.Path("KESWD/KesWD.conf")).starts_with("[OTHER]\r\nA=1\r\n[SERVICES]\r\nMine=2\r\nKes"));
  CHECK((with.Ini("KELUpg").empty() && initialise("", "true") == KE_MISSING_ARGUMENT));
  CHECK(CALL(*plugin, FakeCalls)("KE_ReloadPlugins") == 4 * 2);
  plugin.reset();
  CHECK(GetModuleHandleA("KERegister.dll") == nullptr);
  RegDeleteTreeA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavrin Security");
  CHECK(with.Ini("KELUpg") == "[GENERAL]\r\nREBOOT_REQUIRED=true\r\n");
  std::filesystem::remove_all(with.tree.Path("KELUpg"));
  CHECK(initialise(path.c_str(), "TRUE") == KE_SUCCESS);
}

TEST_CASE("plug-ins, versions and subscriptions: a call leaves another text in its file") {
  const RegistrationTree with;
  const auto add = CALL(with.dll, KE_AddPlugin);
  const auto remove = CALL(with.dll, KE_RemovePlugin), setVersion = CALL(with.dll, KE_SetVersion),
             subscribe = CALL(with.dll, KE_AddPolicyTypeSuscription),
             withdraw = CALL(with.dll, KE_RemovePolicyTypeSuscription);
  const std::string log = with.tree / "KELUpg\\KELUPG.log", type = "[PLUGINS]\r\n[TYPES_101]\r\n";
  with.tree.AddDevkit("KELUPG.dll", "KELUpg");
  const std::tuple<std::function<KE_RESULT()>, const char*, std::string> steps[] = {
      {[&] { return add("K", "KELConf", "\"a b\""); }, "KELConf", "[PLUGINS]\r\nK=\"a b\"\r\n"},
      {[&] { return add("k", "kelconf", "c"); }, "KELConf", "[PLUGINS]\r\nK=c\r\n"},
      {[&] { return remove("K", "KELConf"); }, "KELConf", "[PLUGINS]\r\n"},
      {[&] { return add("K", "KELConf", nullptr); }, "KELConf", "[PLUGINS]\r\n"},
      {[&] { return subscribe("KELSYSCF", "101"); }, "KELConf", type + "KELSYSCF=YES\r\n"},
      {[&] { return subscribe("kec", "101"); }, "KELConf", type + "KELSYSCF=YES\r\nkec=YES\r\n"},
      {[&] { return withdraw("kec", "101"); }, "KELConf", type + "KELSYSCF=YES\r\n"},
      {[&] { return subscribe("KEC", "101"); }, "KELConf", type + "KEC=YES\r\n"},
      {[&] { return withdraw("KEC", "101"); }, "KELConf", type + "KELSYSCF=YES\r\n"},
      {[&] { return setVersion("X", "2"); }, "KELUpg", "[INSTALLED]\r\nX=2\r\n"},
      {[&] { return support::ReadFile(log).size(); }, "KELUpg", "[INSTALLED]\r\nX=2\r\n"},  // not notified
      {[&] { return setVersion("keagent", "3"); }, "KELUpg", "[INSTALLED]\r\nX=2\r\nkeagent=3\r\n"},
      {[&] { return add("X", "KELUpg", "x"); }, "KELUpg", "[INSTALLED]\r\nX=2\r\nkeagent=3\r\n[PLUGINS]\r\nX=x\r\n"},
      {[&] { return remove("X", "kelupg"); }, "KELUpg", "[INSTALLED]\r\nX=NOT\r\nkeagent=3\r\n[PLUGINS]\r\n"},
  };
  for (const auto& [step, module, text] : steps) CHECK((step() == KE_SUCCESS && with.Ini(module) == text));
  CHECK(support::ReadFile(log).ends_with(";1;0\r\n"));
  const char* const none = nullptr;
  for (const auto change : {remove, setVersion, subscribe, withdraw}) {
    for (const auto& [key, text] : {std::pair{none, "KELConf"}, {"", "1"}, {"K", none}, {"K", ""}})
      CHECK((change(key, text) == KE_MISSING_ARGUMENT && add(key, text, "v") == KE_MISSING_ARGUMENT));
  }
  for (const char* file : {"KELUpg", "KELConf/KELConf.ini"}) std::filesystem::remove_all(with.tree.Path(file));
  std::filesystem::create_directory(with.tree.Path("KELConf/KELConf.ini"));  // a folder in the file's place
  for (const char* key : {"KEC", "K"}) {
    for (const auto change : {setVersion, subscribe, withdraw}) CHECK(change(key, "101") == KE_STORE_UNUSABLE);
    for (const char* host : {"KELUpg", "KELConf"}) CHECK(remove(key, host) == KE_STORE_UNUSABLE);
  }
  CHECK(add("K", "KELConf", "v") == KE_STORE_UNUSABLE);
}

TEST_CASE("plug-ins of the update module: one stays, or the launcher's failure is another result") {
  const RegistrationTree with;
  const auto remove = [&] {
    support::WriteFile(with.tree.Path("KELUpd/KELUpd.ini"), "[PLUGINS]\r\nX=x\r\n");
    const KE_RESULT result = CALL(with.dll, KE_RemovePlugin)("X", "kelupd");
    CHECK(with.Ini("KELUpd") == "[PLUGINS]\r\n");
    return result;
  };
  CHECK(remove() == KE_LAUNCHER_NOT_LOADED);
  with.tree.AddFake("FakeKELMNAPI", "Common/KELMNAPI.dll");
  CHECK((remove() == KE_SUCCESS && GetModuleHandleA("KELMNAPI.dll") == nullptr));
  const LoadedDll fake(with.tree.Path("Common/KELMNAPI.dll"));
  FakeLauncherState& launcher = *CALL(fake, FakeLauncher)();
  launcher.exitCode = 7;
  CHECK(remove() == KE_STORE_UNUSABLE);
  launcher.result = -3;
  CHECK((remove() == KE_PROGRAM_NOT_STARTED && std::string(launcher.command) == "KELUPD -REMOVEINFO:X"));
}

TEST_CASE("command gate: a command runs although the installation state forbids it, or cannot be read") {
  const RegistrationTree with;
  uint32_t allowed = 7;
  for (const auto& [state, expected] : {std::pair{199, 0u}, {200, 1u}}) {
    REQUIRE(CALL(with.dll, KE_SetInstallState)(&state, 0) == KE_SUCCESS);
    CHECK((CALL(with.dll, KE_CanRunCommand)(nullptr, &allowed) == KE_SUCCESS && allowed == expected));
  }
  const support::LockedFile locked(with.tree.Store("INTEGRA.DAT"));
  CHECK((CALL(with.Load(), KE_CanRunCommand)("KELTVEVT", &allowed) == KE_STORE_UNUSABLE && allowed == 0));
}
