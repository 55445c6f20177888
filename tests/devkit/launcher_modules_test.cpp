#include <doctest/doctest.h>

#include <cstring>
#include <regex>

#include "KEPlugin.h"
#include "kelmnapi/results.h"
#include "plugin/results.h"
#include "siblings/functions.h"
#include "standin/results.h"
#include "support/product_tree.h"
#include "win/process.h"

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
  // What the lines of a log say behind time, process and path.
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
  check("KELREPORT -R \"a b\"  -force", kelmnapi::kSuccess, -7);
  check("KELUPG -R", kelmnapi::kSuccess, 1);
  check("KELCONF -LocalCfg", kelmnapi::kNoComponent, kUntouched);
  for (const char* unusable : {"FOLDER", "NODO"}) check(unusable, kelmnapi::kNotStarted, kUntouched);
  check("..\\KELREPORT\\KELREPORT -R", kelmnapi::kBadCommand, kUntouched);
  check(nullptr, kelmnapi::kBadArgument, kUntouched);
  for (const char* limit : {"-1", "3600001", "0"}) {
    tree.Write("Common/KELMNAPI.ini", std::string("[WAIT]\r\nMilliseconds=") + limit + "\r\n");
    check("KELREPORT -late", *limit == '0' ? kelmnapi::kNotEnded : kelmnapi::kBadSettings, kUntouched);
  }
  CHECK(tree.Log("Common/KELMNAPI.log") == expected);
  CHECK((tree.Log("KELUPG/KELUPG.log") == "0;0\n" && GetModuleHandleA("KELUPG.dll") == nullptr));
  // A program can be removed when it has ended.
  std::error_code running;
  for (int i = 0; i < 200 && !std::filesystem::remove(tree.Path("KELREPORT/KELREPORT.exe"), running); ++i) Sleep(10);
  const std::string called = "-7;" + tree.Calling("KELREPORT");
  CHECK(tree.Log("KELREPORT/KELREPORT.log") == called + " -R \"a b\"  -force\n" + called + " -late\n");
}

TEST_CASE("launcher: updates run the update component, unless a script answers") {
  const Tree tree;
  const support::LoadedDll launcher(tree.Path("Common/KELMNAPI.dll"));
  const auto update = CALL(launcher, UpdateNow);
  const auto updateEx = CALL(launcher, UpdateNowEx);
  std::int32_t code = kUntouched;
  CHECK((update(0, nullptr) + CALL(launcher, Run)("KELUPD", nullptr) == 2 * kelmnapi::kBadArgument));
  CHECK(update(0, &code) == kelmnapi::kNoComponent);
  tree.Add("KELUPG.dll", "KELUPD/KELUPD.dll");
  CHECK((update(1, &code) == kelmnapi::kSuccess && code == 1));
  tree.Add("KEPLPMNG.exe", "KELUPD/KELUPD.exe");
  CHECK((update(0, &code) + updateEx(2, &code, 1, 0xFFFFFFFF) == kelmnapi::kSuccess && code == 0));
  const std::string called = "0;" + tree.Calling("KELUPD") + " -UpdateNow";
  CHECK(tree.Log("KELUPD/KELUPD.log") == "0;1\n" + called + "\n" + called + " -ForceContinue -Values:1,4294967295\n");
  tree.Write("Common/KELMNAPI.ini", "[UpdateNow]\r\nExitCodes=0,1559,1566\r\n[UpdateNowEx]\r\nResult=-5\r\n");
  for (const std::int32_t expected : {0, 1559, 1566, 0}) {
    CHECK((update(expected != 0, &code) == 0 && code == expected));
    CHECK((updateEx(0, &code, 3, 4) == -5 && code == 0));
  }
  tree.Write("Common/KELMNAPI.ini", "[UpdateNow]\r\nResult=12345678901234567890123456789012\r\n");
  CHECK((update(0, &(code = kUntouched)) == kelmnapi::kBadSettings && code == kUntouched));
#define FIND(name, presence) CHECK(bool(GetProcAddress(launcher.Handle(), #name)));
#define REFUSED(name, presence) CHECK(launcher.Get<int(KE_SIBLING_CALL*)()>(#name)() == kelmnapi::kNotSupported);
  KE_LAUNCHER_FUNCTIONS(FIND, REFUSED)
}

TEST_CASE("stand-ins: the command line is logged and the exit code is the settings'") {
  const Tree tree;
  for (const std::string name : {"KEPLPMNG", "KepWInst"}) {
    tree.Add(name + ".exe", name + ".exe");
    const std::string line = "\"" + tree.Path(name + ".exe").string() + "\" -FORCE";
    const auto check = [&](const char* settings, unsigned long exitCode) {
      tree.Write(name + ".ini", std::string("[EXIT]\r\n") + settings);
      CHECK(support::RunProgram(line).exitCode == exitCode);
      CHECK(tree.Log(name + ".log").ends_with(std::to_string(exitCode) + ";" + line + "\n"));
    };
    check("", standin::kSuccess);
    check("Code=3010\r\nDelayMilliseconds=1\r\n", 3010);
    for (const char* bad : {"Code=x\r\n", "DelayMilliseconds=600001\r\n"}) check(bad, standin::kBadSettings);
    const support::LockedFile locked(tree.Path(name + ".log"));
    CHECK(support::RunProgram(line).exitCode == standin::kNotLogged);
  }
  // Several at once leave whole lines, however long their command line.
  tree.Add("KEPLPMNG.exe", "Many.exe");
  const std::string line = "\"" + tree / "Many.exe" + "\" " + std::string(8000, 'x');
  std::string expected;
  win::Process running[6];
  for (win::Process& process : running) process = win::StartProcess(line, {.creationFlags = DETACHED_PROCESS});
  for (const win::Process& process : running) {
    CHECK((process.Wait(60000) == WAIT_OBJECT_0 && process.ExitCode() == DWORD{standin::kSuccess}));
    expected += "0;" + line.substr(0, 512) + "...\n";
  }
  CHECK(tree.Log("Many.log") == expected);
}

TEST_CASE("plug-ins: told nothing before they are initialised, and no password is shown") {
  const Tree tree;
  for (const std::string name : {"KELRCM", "KEC"}) {
    tree.Add(name + ".dll", name + ".dll");
    const support::LoadedDll dll(tree.Path(name + ".dll"));
    const std::string function = name == "KEC" ? "KEINSTALL_SetInfo" : "KECONF_SetInfo";
    const auto setInfo = dll.Get<decltype(&::KECONF_SetInfo)>(function.c_str());
    const auto initialise = CALL(dll, KE_Initialize);
    const auto finalise = CALL(dll, KE_Finalize);
    CHECK((setInfo(5, "s3cret") == plugin::kNotInitialised && finalise() == plugin::kNotInitialised));
    CHECK((initialise(1) == plugin::kRefusedMode && initialise(6) == plugin::kSuccess));
    CHECK((setInfo(4, "user\r\n") == plugin::kSuccess && setInfo(5, "s3cret") == plugin::kSuccess));
    CHECK((setInfo(6, nullptr) == plugin::kBadArgument && setInfo(7, "s3cret") == plugin::kUnknownInfo));
    CHECK((finalise() == plugin::kSuccess && setInfo(6, "id") == plugin::kNotInitialised));
    CHECK(std::regex_replace(tree.Log(name + ".log"), std::regex(function), "Set") ==
          "Set;3;5;***\nKE_Finalize;3;\nKE_Initialize;2;1\nKE_Initialize;0;6\nSet;0;4;user??\nSet;0;5;***\n"
          "Set;1;6;***\nSet;4;7;***\nKE_Finalize;0;\nSet;3;6;***\n");
    tree.Write(name + ".ini", "[PLUGIN]\r\nMode=1\r\n");
    CHECK((initialise(6) == plugin::kRefusedMode && initialise(1) + finalise() == plugin::kSuccess));
    const support::LockedFile locked(tree.Path(name + ".log"));
    CHECK((initialise(1) == plugin::kNotLogged && setInfo(6, "id") == plugin::kNotInitialised));
    tree.Write(name + ".ini", "[PLUGIN]\r\nMode=one\r\n");
    CHECK(initialise(1) == plugin::kBadSettings);
  }
}

TEST_CASE("installer plug-in: the proxy of its settings, within the record") {
  const Tree tree;
  tree.Add("KEC.dll", "KEC.dll");
  const support::LoadedDll dll(tree.Path("KEC.dll"));
  const auto getConfig = CALL(dll, KEINSTALL_GetInetConfig);
  KE_PROXY records[2];  // the second is there to be left alone
  const auto check = [&](const std::string& settings, int result, const KE_PROXY& proxy) {
    CAPTURE(settings);
    std::memset(records, 'z', sizeof records);
    tree.Write("KEC.ini", "[PROXY]\r\n" + settings + "\r\n");
    CHECK(getConfig(records, sizeof records) == result);
    CHECK(std::memcmp(records, result ? &records[1] : &proxy, offsetof(KE_PROXY, password) + 256) == 0);
    CHECK(std::string(records[1].host, sizeof proxy) == std::string(sizeof proxy, 'z'));
  };
  CHECK(getConfig(records, sizeof *records) == plugin::kNotInitialised);
  REQUIRE(CALL(dll, KE_Initialize)(6) == plugin::kSuccess);
  const std::string longest(255, 'h');
  check("Host=\r\nPort=x", KE_INSTALLER_PLUGIN_UNUSABLE, {});
  check("Host=p.example", plugin::kSuccess, {"p.example", 80, 0, "", ""});
  check("Host=p\r\nPort=65535\r\nUser=joe\r\nPassword=s3cret", plugin::kSuccess, {"p", 65535, 1, "joe", "s3cret"});
  check("Host=p\r\nPort=65536", plugin::kBadSettings, {});
  check("Host=p\r\nPassword=h" + longest, plugin::kBadSettings, {});
  tree.Write("KEC.ini", "[PROXY]\r\nHost=" + longest + "\r\n");
  CHECK(getConfig(nullptr, sizeof *records) + getConfig(records, sizeof *records - 1) == 2 * plugin::kBadArgument);
  CHECK((getConfig(records, sizeof *records) == plugin::kSuccess && records->host == longest));
  const std::string log = tree.Log("KEC.log");
  CHECK((log.find(";0;p:65535\n") != log.npos && log.find("joe") == log.npos && log.find("s3cret") == log.npos));
}
