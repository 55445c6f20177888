#include <doctest/doctest.h>

#include <cstring>
#include <regex>

#include "KEAction.h"
#include "KEPlugin.h"
#include "shared/results.h"
#include "siblings/functions.h"
#include "support/product_tree.h"

using namespace devkit;

namespace {

constexpr std::int32_t kUntouched = 99;

// A tree with the launcher in Common, and what is added to it.
struct Tree : support::Folder {
  Tree() { Add("KELMNAPI.dll", "Common/KELMNAPI.dll"); }
  void Add(const std::string& file, const std::string& relative) const {
    std::filesystem::create_directories(Path(relative).parent_path());
    std::filesystem::copy_file(support::BuildFolder() / "devkit" / file, Path(relative));
  }
  void Write(const std::string& relative, const std::string& text) const { support::WriteFile(Path(relative), text); }
  // The lines of a log after time, process and path.
  std::string Log(const std::string& relative) const {
    static const std::regex line("(?:[^;\r\n]*;){3}([^\r\n]*)\r\n");
    return std::regex_replace(support::ReadFile(Path(relative)), line, "$1\n");
  }
  // How the launcher calls a component's program.
  std::string Calling(const char* name) const {
    return "\"" + Path("Common\\..\\").string() + name + "\\" + name + ".exe\"";
  }
};

}  // namespace

TEST_CASE("launcher: a command runs a program, else an action module, and leaves a line") {
  const Tree tree;
  const support::LoadedDll launcher(tree.Path("Common/KELMNAPI.dll"));
  tree.Add("KEPLPMNG.exe", "KELREPORT/KELREPORT.exe");
  tree.Write("KELREPORT/KELREPORT.ini", "[EXIT]\r\nCode=-7\r\nDelayMilliseconds=100\r\n");
  tree.Add("KELUPG.dll", "KELUPG/KELUPG.dll");
  tree.Add("ApiCr.dll", "NODO/NODO.dll");
  std::filesystem::create_directories(tree.Path("FOLDER/FOLDER.exe"));
  std::string expected;
  const auto check = [&](const char* command, int result, std::int32_t exitCode) {
    CAPTURE(command);
    std::int32_t code = kUntouched;
    SetLastError(1234);
    CHECK(CALL(launcher, Run)(command, &code) == result);
    CHECK((code == exitCode && GetLastError() == 1234));
    expected += "Run;" + std::to_string(result) + ";" + (exitCode == kUntouched ? "-" : std::to_string(exitCode)) +
                ";" + (command ? command : "(null)") + "\n";
  };
  check("KELREPORT -R \"a b\"  -force", kSuccess, -7);
  check("KELUPG -R", kSuccess, kUnknownAction);
  check("KELCONF -LocalCfg", kNoComponent, kUntouched);
  for (const char* unusable : {"FOLDER", "NODO"}) check(unusable, kNotStarted, kUntouched);
  const std::string longest(64, 'K'), tooLong = longest + "K -R";
  for (const char* bad : {"", " K", "..\\KELREPORT\\KELREPORT -R", "C:K", "K.exe", "nul", "Aux -x", "lpT9", "com1 -x"})
    check(bad, kBadCommand, kUntouched);
  check(tooLong.c_str(), kBadCommand, kUntouched);
  for (const char* missing : {longest.c_str(), "COM", "COM12", "CON1"}) check(missing, kNoComponent, kUntouched);
  check(nullptr, kBadArgument, kUntouched);
  for (const char* limit : {"-1", "3600001", "0"}) {
    tree.Write("Common/KELMNAPI.ini", std::string("[WAIT]\r\nMilliseconds=") + limit + "\r\n");
    check("KELREPORT -late", *limit == '0' ? kNotEnded : kBadSettings, kUntouched);
  }
  CHECK(tree.Log("Common/KELMNAPI.log") == expected);
  CHECK((tree.Log("KELUPG/KELUPG.log") == "Do;17;0;0\n" && GetModuleHandleA("KELUPG.dll") == nullptr));
  // A program can be removed when it has ended.
  std::error_code running;
  for (int i = 0; i < 200 && !std::filesystem::remove(tree.Path("KELREPORT/KELREPORT.exe"), running); ++i) Sleep(10);
  const std::string called = "-7;" + tree.Calling("KELREPORT");
  CHECK(tree.Log("KELREPORT/KELREPORT.log") == called + " -R \"a b\"  -force\n" + called + " -late\n");
}

TEST_CASE("launcher: updates run the update component, unless the settings have a script") {
  const Tree tree;
  const support::LoadedDll launcher(tree.Path("Common/KELMNAPI.dll"));
  const auto update = CALL(launcher, UpdateNow);
  const auto updateEx = CALL(launcher, UpdateNowEx);
  std::int32_t code = kUntouched;
  CHECK((update(0, nullptr) + CALL(launcher, Run)("KELUPD", nullptr) == 2 * kBadArgument));
  tree.Add("KELUPG.dll", "KELUPD/KELUPD.dll");
  CHECK((update(1, &code) == kSuccess && code == kUnknownAction));
  tree.Add("KEPLPMNG.exe", "KELUPD/KELUPD.exe");
  CHECK((update(0, &code) + updateEx(2, &code, 1, 0xFFFFFFFF) == kSuccess && code == 0));
  const std::string called = "0;" + tree.Calling("KELUPD") + " -UpdateNow";
  CHECK(tree.Log("KELUPD/KELUPD.log") ==
        "Do;17;0;1\n" + called + "\n" + called + " -ForceContinue -Values:1,4294967295\n");
  tree.Write("Common/KELMNAPI.ini", "[UpdateNow]\r\nExitCodes=0,1559,1566\r\n[UpdateNowEx]\r\nResult=-5\r\n");
  for (const std::int32_t expected : {0, 1559, 1566, 0}) {
    CHECK((update(expected != 0, &code) == 0 && code == expected));
    CHECK((updateEx(0, &code, 3, 4) == -5 && code == 0));
  }
  tree.Write("Common/KELMNAPI.ini", "[UpdateNow]\r\nResult=12345678901234567890123456789012\r\n");
  CHECK((update(0, &(code = kUntouched)) == kBadSettings && code == kUntouched));
#define SKIP(name, presence)
#define REFUSED(name, presence) CHECK(launcher.Get<int(KE_SIBLING_CALL*)()>(#name)() == kNotSupported);
  KE_LAUNCHER_FUNCTIONS(SKIP, REFUSED)
}

TEST_CASE("stand-ins: each start is a line of the bounded log, and the exit code is the settings'") {
  const Tree tree;
  tree.Add("KEPLPMNG.exe", "Any.exe");
  const std::string line = "\"" + tree.Path("Any.exe").string() + "\" -FORCE";
  const std::tuple<const char*, unsigned long> rows[] = {{"", kSuccess},
                                                         {"Code=3010\r\nDelayMilliseconds=1", 3010},
                                                         {"Code=x", kBadSettings},
                                                         {"DelayMilliseconds=600001", kBadSettings}};
  for (const auto& [settings, exitCode] : rows) {
    tree.Write("Any.ini", std::string("[EXIT]\r\n") + settings);
    CHECK(support::RunProgram(line).exitCode == exitCode);
    CHECK(tree.Log("Any.log").ends_with(std::to_string(exitCode) + ";" + line + "\n"));
  }
  tree.Add("KERegister.dll", "KERegister.dll");
  const support::LoadedDll reload(tree.Path("KERegister.dll"));
  tree.Write("KERegister.log", std::string(65536, 'o'));
  CHECK(CALL(reload, KE_ReloadPlugins)() == kSuccess);
  CHECK((tree.Log("KERegister.log") == "KE_ReloadPlugins;0;\n" &&
         support::ReadFile(tree.Path("KERegister.log.old")).size() == 65536));
  const support::LockedFile locked(tree.Path("Any.log")), alsoLocked(tree.Path("KERegister.log"));
  CHECK((support::RunProgram(line).exitCode == kNotLogged && CALL(reload, KE_ReloadPlugins)() == kNotLogged));
}

TEST_CASE("plug-ins: accept nothing before they are initialised, and log no password") {
  const Tree tree;
  for (const std::string name : {"KELRCM", "KEC"}) {
    tree.Add(name + ".dll", name + ".dll");
    const support::LoadedDll dll(tree.Path(name + ".dll"));
    const std::string function = name == "KEC" ? "KEINSTALL_SetInfo" : "KECONF_SetInfo";
    const auto setInfo = dll.Get<decltype(&::KECONF_SetInfo)>(function.c_str());
    const auto initialise = CALL(dll, KE_Initialize);
    const auto finalise = CALL(dll, KE_Finalize);
    CHECK((setInfo(5, "s3cret") == kNotInitialised && finalise() == kNotInitialised));
    CHECK((initialise(1) == kRefusedMode && initialise(6) == kSuccess));
    CHECK((setInfo(4, "user\r\n") == kSuccess && setInfo(5, "s3cret") == kSuccess));
    CHECK((setInfo(6, nullptr) == kBadArgument && setInfo(7, "s3cret") == kBadArgument));
    CHECK((finalise() == kSuccess && setInfo(6, "id") == kNotInitialised));
    CHECK(std::regex_replace(tree.Log(name + ".log"), std::regex(function), "Set") ==
          "Set;3;5;***\nKE_Finalize;3;\nKE_Initialize;7;1\nKE_Initialize;0;6\nSet;0;4;user??\nSet;0;5;***\n"
          "Set;1;6;***\nSet;1;7;***\nKE_Finalize;0;\nSet;3;6;***\n");
    tree.Write(name + ".ini", "[PLUGIN]\r\nMode=1\r\n");
    CHECK((initialise(6) == kRefusedMode && initialise(1) + finalise() == kSuccess));
    const support::LockedFile locked(tree.Path(name + ".log"));
    CHECK((initialise(1) == kNotLogged && setInfo(6, "id") == kNotInitialised));
  }
}

TEST_CASE("installer plug-in: the proxy of its settings, within the record") {
  const Tree tree;
  tree.Add("KEC.dll", "KEC.dll");
  const support::LoadedDll dll(tree.Path("KEC.dll"));
  const auto getConfig = CALL(dll, KEINSTALL_GetInetConfig);
  const std::string longest(255, 'h');
  const std::tuple<std::string, int, KE_PROXY> rows[] = {
      {"Host=\r\nPort=x", kNoProxy, {}},
      {"Host=p.example", kSuccess, {"p.example", 80, 0, "", ""}},
      {"Host=p\r\nPort=65535\r\nUser=joe\r\nPassword=s3cret", kSuccess, {"p", 65535, 1, "joe", "s3cret"}},
      {"Host=p\r\nPort=65536", kBadSettings, {}},
      {"Host=p\r\nPassword=h" + longest, kBadSettings, {}}};
  KE_PROXY records[2];  // the second has to stay as it is
  CHECK(getConfig(records, sizeof *records) == kNotInitialised);
  REQUIRE(CALL(dll, KE_Initialize)(6) == kSuccess);
  for (const auto& [settings, result, proxy] : rows) {
    CAPTURE(settings);
    std::memset(records, 'z', sizeof records);
    tree.Write("KEC.ini", "[PROXY]\r\n" + settings + "\r\n");
    CHECK(getConfig(records, sizeof records) == result);
    CHECK(std::memcmp(records, result ? &records[1] : &proxy, offsetof(KE_PROXY, password) + 256) == 0);
    CHECK(std::string(records[1].host, sizeof proxy) == std::string(sizeof proxy, 'z'));
  }
  CHECK(getConfig(nullptr, sizeof *records) + getConfig(records, sizeof *records - 1) == 2 * kBadArgument);
  const std::string log = tree.Log("KEC.log");
  CHECK((log.find(";0;p:65535\n") != log.npos && log.find("joe") == log.npos && log.find("s3cret") == log.npos));
}
