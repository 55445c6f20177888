#include <doctest/doctest.h>

#include <cstring>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <sstream>

#include "KEAction.h"
#include "KEPlugin.h"
#include "TvLogSys.h"
#include "shared/results.h"
#include "siblings/functions.h"
#include "support/product_tree.h"

using namespace devkit;
using nlohmann::json;

namespace {

constexpr char kFolderVariable[] = "DEVKIT_TEST_FOLDER";
constexpr int kProcesses = 3, kLines = 150, kLineLength = 23;
constexpr std::int32_t kUntouched = 99;

// A folder with modules and programs of the devkit in it.
struct Tree : support::Folder {
  std::string Add(const std::string& file, const std::string& relative) const {
    std::filesystem::create_directories(Path(relative).parent_path());
    std::filesystem::copy_file(support::BuildFolder() / "devkit" / file, Path(relative));
    return Path(relative).string();
  }
  void Write(const std::string& relative, const std::string& text) const { support::WriteFile(Path(relative), text); }
  // The lines of a log after time, process and path.
  std::string Log(const std::string& relative) const {
    static const std::regex line("(?:[^;\r\n]*;){3}([^\r\n]*)\r\n");
    return std::regex_replace(support::ReadFile(Path(relative)), line, "$1\n");
  }
};

// A module with functions that are looked up only, which it refuses.
struct Module : support::LoadedDll {
  using LoadedDll::LoadedDll;
  int Refuses(const char* name) const { return Get<int(KE_SIBLING_CALL*)()>(name)(); }
};
#define SKIP(name, presence)
#define CHECK_REFUSED(name, presence) CHECK(module.Refuses(#name) == kNotSupported);

std::uint32_t OpenLog(const Module& module, const std::string& path, std::uint32_t maximumSize) {
  std::uint32_t handle = 0;
  LogFileSettings settings{0, {}, maximumSize, 1, 1};
  std::strcpy(settings.path, path.c_str());
  REQUIRE(CALL(module, LogSys_InitializeLogSystem)(&handle) == kSuccess);
  REQUIRE(CALL(module, LogSys_ConfigureLogFile)(handle, &settings) == kSuccess);
  return handle;
}

struct AgentModule : Module {
  explicit AgentModule(const std::string& path) : Module(path) { CALL(*this, KE_AGAPI_Initialize)(); }
  int Store(std::uint32_t item, std::string record) const {
    return static_cast<int>(CALL(*this, KE_AGAPI_SetConfig)(1, item, record.data(), record.size()));
  }
  // The record, or the result in brackets when the buffer stayed as it was.
  std::string Record(std::uint32_t item, std::uint32_t size) const {
    std::string record(size, '?');
    const std::uint32_t result = CALL(*this, KE_AGAPI_GetConfig)(1, item, record.data(), size);
    return result == kSuccess ? record : record == std::string(size, '?') ? "(" + std::to_string(result) + ")" : "";
  }
};

}  // namespace

TEST_CASE("crypto: buffers decrypt, also cut ones, and bad arguments and uncalled functions are refused") {
  const Module module(support::BuildFolder() / "devkit" / "ApiCr.dll");
  const std::string blob(188, 'K'), otherBlob(188, 'L');
  const auto apply = [&](auto function, std::string text, const std::string& keyBlob) {
    std::int32_t error = -1;
    function(text.data(), text.size(), keyBlob.c_str(), 0, &error);
    return error == APICR_SUCCESS ? text : "(" + std::to_string(error) + ")";
  };
  const auto encrypt = CALL(module, APIcr_EncryptBuffer), decrypt = CALL(module, APIcr_DecryptBuffer);
  CHECK((apply(encrypt, "17", blob) == "(2)" && apply(decrypt, std::string(16, 'x'), "short") == "(1)"));
  // Computed with the openssl program.
  CHECK(apply(encrypt, "0123456789abcdefFEDCBA9876543210", blob) ==
        "\x04\xf5\x05\x93\x95\x11\x2d\x2a\xa4\x4e\x78\x74\x44\x5c\x0c\xab\x10\xe7\x6f\x65\x95\x67\x39\x6d"
        "\xc7\x23\x3d\x24\x42\x65\x77\x5d");
  for (const std::size_t length : {0, 16, 32, 1 << 20}) {
    const std::string text(length, 't'), cipher = apply(encrypt, text, blob);
    CHECK(apply(decrypt, cipher, blob) == text);
    CHECK(apply(decrypt, cipher.substr(0, length / 32 * 16), blob) == text.substr(0, length / 32 * 16));
    CHECK((length == 0 || apply(decrypt, cipher, otherBlob) != text));
  }
#define CHECK_REFUSED_CRYPTO(name, presence) CHECK(module.Refuses(#name) == APICR_NOT_SUPPORTED);
  KE_CRYPTO_FUNCTIONS(SKIP, CHECK_REFUSED_CRYPTO)
}

TEST_CASE("a process that logs and stores records" * doctest::skip()) {
  const std::string folder = std::getenv(kFolderVariable);
  const Module module(folder + "\\TvLogSys.dll");
  const std::uint32_t handle = OpenLog(module, folder + "\\a.log", kProcesses * kLines * kLineLength * 2 / 3);
  const auto dump = CALL(module, LogSys_DumpLogFile);
  for (int i = 0; i < kLines; ++i) CHECK(dump(handle, 0, "%08lu %012d\r\n", GetCurrentProcessId(), i) == kSuccess);
  const AgentModule agent(folder + "\\KELAGAPI.dll");
  for (int i = 0; i < 50; ++i) {
    CHECK(agent.Store(10, std::string(8536, static_cast<char>('a' + (GetCurrentProcessId() / 4 + i) % 26))) == 0);
    const std::string record = agent.Record(10, 8536);
    CHECK(record == std::string(8536, record[0]));
  }
}

TEST_CASE("processes at once lose and tear no line, also while the log rotates, and no record") {
  const Tree tree;
  for (const char* file : {"TvLogSys.dll", "KELAGAPI.dll"}) tree.Add(file, file);
  const support::EnvironmentVariable path(kFolderVariable, (tree / ".").c_str());
  CHECK(support::RunAtOnce(kProcesses, "a process that logs and stores records") == 0);
  const std::string text = support::ReadFile(tree / "a.log.old") + support::ReadFile(tree / "a.log");
  std::set<std::string> lines;
  for (std::size_t at = 0; at < text.size(); at += kLineLength) lines.insert(text.substr(at, kLineLength));
  CHECK(lines.size() == kProcesses * kLines);
  for (const std::string& line : lines) CHECK(line.find("\r\n") == kLineLength - 2);
  CHECK(tree.FileCount() == 6);  // no leftovers
}

TEST_CASE("log: a full file is kept as the older one; bad input is refused, long and higher lines are not written") {
  const Tree tree;
  const Module module(support::BuildFolder() / "devkit" / "TvLogSys.dll");
  const auto configure = CALL(module, LogSys_ConfigureLogFile);
  const auto dump = CALL(module, LogSys_DumpLogFile);
  const std::uint32_t handle = OpenLog(module, tree / "a.log", 10), other = OpenLog(module, tree / "b.log", 9999);
  const std::string large(30, 'L'), huge(9000, 'x');
  for (const std::string& line : {std::string("1234567890"), large, std::string("b")})
    CHECK(dump(handle, 0, "%s", line.c_str()) == kSuccess);
  CHECK((support::ReadFile(tree / "a.log") == "b" && support::ReadFile(tree / "a.log.old") == large));
  const support::LockedFile reader(tree / "a.log", FILE_SHARE_READ | FILE_SHARE_WRITE);
  CHECK((dump(handle, 0, "1234567890") == kSuccess && support::ReadFile(tree / "a.log") == "b1234567890"));
  SetLastError(4711);
  LogFileSettings empty{0, "", 1000, 1, 1}, noSize{0, "a.log", 0, 1, 1}, unterminated{0, "", 1000, 1, 1};
  std::memset(unterminated.path, 'x', sizeof unterminated.path);
  for (const LogFileSettings* bad : {&empty, &unterminated, &noSize}) CHECK(configure(handle, bad) == kBadArgument);
  CHECK((dump(0xFFFFFFFFu, 0, "x") == kBadHandle && dump(0, 0, "x") == kBadHandle));
  CHECK(dump(OpenLog(module, tree / "missing\\a.log", 1000), 0, "x") == kFileFailure);
  CHECK(dump(other, 0, "%s\r\n", huge.c_str()) + dump(other, 1, "y") == kSuccess);
  std::uint32_t more = 0;
  for (int i = 3; i < 64; ++i) CHECK(CALL(module, LogSys_InitializeLogSystem)(&more) == kSuccess);
  CHECK((CALL(module, LogSys_InitializeLogSystem)(&more) == kTooMany && GetLastError() == 4711));
  CHECK(support::ReadFile(tree / "b.log") == huge.substr(0, 8189) + "\r\n");
}

TEST_CASE("agent records: survive the module, are returned in their size only, and damage is reported and kept") {
  const Tree tree;
  const std::string dll = tree.Add("KELAGAPI.dll", "KELAGAPI.dll"), largest(65536, 'L');
  CHECK(AgentModule(dll).Record(7, 4) == std::string(4, '\0'));
  for (const std::string& text : {largest, std::string("now")}) CHECK(AgentModule(dll).Store(7, text) == kSuccess);
  const AgentModule module(dll);
  CHECK((module.Store(8, largest + "L") == kBadArgument && module.Store(8, largest) == 0));
  CHECK((module.Record(8, 65536) == largest && module.Record(7, 3) == "now" && module.Record(7, 6) == "(12)"));
  CHECK(CALL(module, KE_AGAPI_AskProxyConfig)() == kWrongSize);
  const std::string path = tree / "KELAGAPI-1-7.rec", whole = support::ReadFile(path);
  for (size_t i = 0; i < whole.size(); ++i) {
    std::string flipped = whole;
    flipped[i] ^= 0x10;
    for (const std::string& content : {flipped, whole.substr(0, i), whole + whole.substr(0, i + 1)}) {
      support::WriteFile(path, content);
      CHECK_MESSAGE((module.Record(7, 3) == "(11)" && support::ReadFile(path) == content), i);
    }
  }
  CHECK((module.Store(7, "new") == kSuccess && module.Record(7, 3) == "new"));
  {
    const support::LockedFile locked(path);
    CHECK((module.Record(7, 3) == "(10)" && module.Store(7, "late") == kFileFailure && tree.FileCount() == 4));
  }
  SetLastError(4711);
  KE_AGENT_API_FUNCTIONS(SKIP, CHECK_REFUSED)
  CHECK(CALL(module, KE_AGAPI_Finalize)() + CALL(module, KE_AGAPI_Finalize)() == kNotInitialised);
  CHECK((module.Record(7, 3) == "(14)" && module.Store(7, "abc") == kNotInitialised && GetLastError() == 4711));
}

TEST_CASE("launcher: a command runs a program, else an action module; updates may be scripted") {
  const Tree tree;
  const Module module(tree.Add("KELMNAPI.dll", "Common/KELMNAPI.dll"));
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
    CHECK(CALL(module, Run)(command, &code) == result);
    CHECK((code == exitCode && GetLastError() == 1234));
    expected += "Run;" + std::to_string(result) + ";" + (exitCode == kUntouched ? "-" : std::to_string(exitCode)) +
                ";" + (command ? command : "(null)") + "\n";
  };
  check("KELREPORT -R \"a b\"  -force", kSuccess, -7);
  check("KELUPG -R", kSuccess, kUnknownAction);
  for (const char* unusable : {"FOLDER", "NODO"}) check(unusable, kNotStarted, kUntouched);
  const std::string longest(64, 'K'), tooLong = longest + "K -R";
  for (const char* bad :
       {"", " K", "..\\KELREPORT\\KELREPORT -R", "C:K", "K.exe", "nul", "Aux -x", "lpT9", "com1 -x", tooLong.c_str()})
    check(bad, kBadCommand, kUntouched);
  for (const char* missing : {longest.c_str(), "COM", "COM12", "CON1"}) check(missing, kNoComponent, kUntouched);
  check(nullptr, kBadArgument, kUntouched);
  for (const char* limit : {"3600001", "0"}) {
    tree.Write("Common/KELMNAPI.ini", std::string("[WAIT]\r\nMilliseconds=") + limit + "\r\n");
    check("KELREPORT -late", *limit == '0' ? kNotEnded : kBadSettings, kUntouched);
  }
  CHECK(tree.Log("Common/KELMNAPI.log") == expected);
  CHECK((tree.Log("KELUPG/KELUPG.log") == "Do;17;0;0\n" && GetModuleHandleA("KELUPG.dll") == nullptr));
  CHECK(tree.Log("KELREPORT/KELREPORT.log").find("KELREPORT.exe\" -R \"a b\"  -force\n") != std::string::npos);
  tree.Write("Common/KELMNAPI.ini", "[UpdateNow]\r\nResult=12345678901\r\n[UpdateNowEx]\r\nExitCodes=1559,-1\r\n");
  std::int32_t code = kUntouched;
  CHECK((CALL(module, UpdateNow)(0, &code) == kBadSettings && code == kUntouched));
  for (const std::int32_t next : {1559, -1, 1559})
    CHECK((CALL(module, UpdateNowEx)(0, &code, 3, 4) == kSuccess && code == next));
  KE_LAUNCHER_FUNCTIONS(SKIP, CHECK_REFUSED)
  // The program that is still running keeps its folder.
  std::error_code running;
  for (int i = 0; i < 200 && !std::filesystem::remove(tree.Path("KELREPORT/KELREPORT.exe"), running); ++i) Sleep(10);
}

TEST_CASE("stand-ins: each start is a line of the bounded log, and the exit code is the settings'") {
  const Tree tree;
  const std::string line = "\"" + tree.Add("KEPLPMNG.exe", "Any.exe") + "\" -FORCE";
  const std::pair<const char*, unsigned long> rows[] = {
      {"", kSuccess}, {"Code=3010\r\nDelayMilliseconds=1", 3010}, {"DelayMilliseconds=600001", kBadSettings}};
  for (const auto& [settings, exitCode] : rows) {
    tree.Write("Any.ini", std::string("[EXIT]\r\n") + settings);
    CHECK(support::RunProgram(line).exitCode == exitCode);
    CHECK(tree.Log("Any.log").ends_with(std::to_string(exitCode) + ";" + line + "\n"));
  }
  const Module reload(tree.Add("KERegister.dll", "KERegister.dll"));
  tree.Write("KERegister.log", std::string(65536, 'o'));
  CHECK(CALL(reload, KE_ReloadPlugins)() == kSuccess);
  CHECK(
      (tree.Log("KERegister.log") == "KE_ReloadPlugins;0;\n" && std::filesystem::exists(tree / "KERegister.log.old")));
  const support::LockedFile locked(tree.Path("Any.log")), alsoLocked(tree.Path("KERegister.log"));
  CHECK((support::RunProgram(line).exitCode == kNotLogged && CALL(reload, KE_ReloadPlugins)() == kNotLogged));
}

TEST_CASE("plug-ins: accept nothing before they are initialised, log no password, and fill a proxy or nothing") {
  const Tree tree;
  const Module rcm(tree.Add("KELRCM.dll", "KELRCM.dll")), kec(tree.Add("KEC.dll", "KEC.dll"));
  const auto initialise = CALL(rcm, KE_Initialize);
  const auto finalise = CALL(rcm, KE_Finalize);
  const auto setInfo = CALL(rcm, KECONF_SetInfo);
  CHECK((setInfo(5, "s3cret") == kNotInitialised && finalise() == kNotInitialised && initialise(1) == kRefusedMode));
  CHECK((initialise(6) + setInfo(4, "user\r\n") + setInfo(5, "s3cret") == kSuccess));
  CHECK((setInfo(6, nullptr) == kBadArgument && setInfo(7, "s3cret") == kBadArgument && finalise() == kSuccess));
  CHECK(tree.Log("KELRCM.log") ==
        "KECONF_SetInfo;14;5;***\nKE_Finalize;14;\nKE_Initialize;2;1\nKE_Initialize;0;6\nKECONF_SetInfo;0;4;user??\n"
        "KECONF_SetInfo;0;5;***\nKECONF_SetInfo;1;6;***\nKECONF_SetInfo;1;7;***\nKE_Finalize;0;\n");
  {
    const support::LockedFile locked(tree.Path("KELRCM.log"));
    CHECK((initialise(6) == kNotLogged && setInfo(6, "id") == kNotInitialised));
  }
  const auto getConfig = CALL(kec, KEINSTALL_GetInetConfig);
  const std::tuple<std::string, int, KE_PROXY> rows[] = {
      {"Host=\r\nPort=x", kNoProxy, {}},
      {"Host=p\r\nPort=65535\r\nUser=joe\r\nPassword=s3cret", kSuccess, {"p", 65535, 1, "joe", "s3cret"}},
      {"Host=p\r\nPort=65536", kBadSettings, {}},
      {"Host=p\r\nPassword=h" + std::string(255, 'h'), kBadSettings, {}}};
  KE_PROXY record{};
  CHECK((getConfig(&record, sizeof record) == kNotInitialised && CALL(kec, KE_Initialize)(6) == kSuccess));
  for (const auto& [settings, result, proxy] : rows) {
    tree.Write("KEC.ini", "[PROXY]\r\n" + settings + "\r\n");
    CHECK_MESSAGE(getConfig(&(record = {}), sizeof record) == result, settings);
    CHECK(std::memcmp(&record, &proxy, offsetof(KE_PROXY, password) + 256) == 0);
  }
  CHECK(getConfig(nullptr, sizeof record) + getConfig(&record, sizeof record - 1) == 2 * kBadArgument);
  const std::string log = tree.Log("KEC.log");
  CHECK((log.find(";0;p:65535\n") != log.npos && log.find("joe") == log.npos && log.find("s3cret") == log.npos));
}

TEST_CASE("events: every call is a line with its arguments, of any bytes, and its result; failures on demand") {
  const Tree tree;
  const Module module(tree.Add("TvEvAPI.dll", "TvEvAPI.dll"));
  const auto start = CALL(module, TEVT_StartAPI), stop = CALL(module, TEVT_StopAPI);
  const auto install = CALL(module, TEVT_Install);
  const auto scan = CALL(module, TEVT_ScanState);
  std::string hostile;
  for (int byte = 255; byte > 0; --byte) hostile += static_cast<char>(byte);
  const std::string longText(100000, '"');
  const EventInfo info{4, "PC7", longText.c_str(), 0xFFFFFFFF, nullptr, hostile.c_str()};
  CHECK((stop() == kNotInitialised && install(&info, 1) == kNotInitialised && start() == kSuccess));
  CHECK((scan(&info, "Unknown", -3, nullptr) == kSuccess && scan(nullptr, "", 0, "") == kBadArgument));
  KE_EVENT_API_FUNCTIONS(SKIP, CHECK_REFUSED)
  tree.Write("TvEvAPI.ini", "[FAIL]\r\nTEVT_StopAPI=-8\r\nTEVT_Install=9\r\n");
  CHECK((install(&info, 1) == 9 && stop() == -8));
  CHECK((support::LockedFile(tree / "events.jsonl"), start()) == kNotLogged);
  SetLastError(4711);
  CHECK((scan(&info, "", 0, "") == kNotInitialised && GetLastError() == 4711));  // neither start is open
  std::istringstream lines(support::ReadFile(tree / "events.jsonl"));
  std::vector<json> events;
  for (std::string line; std::getline(lines, line);) events.push_back(json::parse(line));
  REQUIRE(events.size() == 5 + 12 + 3);
  CHECK((events[0]["process"] == GetCurrentProcessId() && events[0]["thread"] == GetCurrentThreadId()));
  CHECK(events[3].value("description", "").starts_with("\xC3\xBF\xC3\xBE"));
  for (const char* changing : {"time", "process", "thread", "description"}) events[3].erase(changing);
  json expected = json::parse(R"({"call":"TEVT_ScanState","class":4,"computer":"PC7","extra":4294967295,"text":null,
    "argument":"Unknown","status":-3,"taskId":null,"cut":true,"result":0})");
  expected["product"] = longText.substr(0, 1024);
  CHECK(events[3] == expected);
}
