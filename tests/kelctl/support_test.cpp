// The support commands of kelctl.exe in product trees that are whole, and in damaged ones.
#include <doctest/doctest.h>

#include <fstream>
#include <list>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>

#include "exports/store_tree.h"

namespace {

using Json = nlohmann::json;
using support::ReadFile;
using support::WriteFile;

// A tree with all that the library looks for, but the plug-ins.
struct Installation : StoreTree {
  Installation() {
    for (const auto& [file, folder] : std::multimap<const char*, const char*>{{"KELAGAPI.dll", "Common"},
                                                                              {"KELMNAPI.dll", "Common"},
                                                                              {"TvLogSys.dll", "Common"},
                                                                              {"TvEvAPI.dll", "KELTVEVT"},
                                                                              {"KELUPG.dll", "KELUPG"},
                                                                              {"zumat.exe", "Scheduler"},
                                                                              {"KEPLPMNG.exe", "KesLpmng"},
                                                                              {"KepWInst.exe", "KepWInst"},
                                                                              {"KePIRes.exe", "KESAgent"}}) {
      tree.AddDevkit(file, folder);
    }
    WriteFile(tree.Path("KELUtils/KELUTILS.INI"), "[LOG]\r\nLEVELLOG=20\r\n");
    for (const char* file : {"INTEGRA.DAT", "INTEGRA.BAK", "INTEGRA.START"}) Put(file, WholeStore("A-1"));
  }

  std::string CommandLine(const std::string& arguments) const {
    return "\"" + (support::BuildFolder() / "bin" / "kelctl.exe").string() + "\" --dll \"" +
           (tree / "KELUtils\\KELUtils.dll") + "\" " + arguments;
  }
  support::ProgramRun Run(const std::string& arguments) const { return support::RunProgram(CommandLine(arguments)); }

  // The document that a command prints; the case fails when it is none.
  Json Document(const std::string& arguments) const {
    const std::string output = Run("--json " + arguments).output;
    INFO(arguments, ": ", output);
    const Json document = Json::parse(output, nullptr, false);
    CHECK_FALSE(document.is_discarded());
    return document;
  }

  // Every file with its content and time of the last write.
  std::string Everything() const {
    std::ostringstream all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(tree.Path(""))) {
      all << entry.path().string();
      if (entry.is_regular_file())
        all << ' ' << entry.last_write_time().time_since_epoch().count() << ' '
            << std::hash<std::string>()(ReadFile(entry.path()));
      all << '\n';
    }
    return all.str();
  }

  const support::EnvironmentVariable installPath{"VOSK_TESTING_INSTALLPATH", (tree / "").c_str()};
};

// A program that runs to the end of the scope, with its output in a file.
class Started {
 public:
  Started(const std::string& commandLine, const std::string& output) : output_(output) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    STARTUPINFOA startup{};
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError =
        CreateFileA(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr);
    process_ = support::StartProgram(commandLine, startup);
    CloseHandle(startup.hStdOutput);
  }
  ~Started() {
    TerminateProcess(process_.hProcess, 0);  // without a console, as under a test run, there is no Ctrl+C
    WaitForSingleObject(process_.hProcess, 10000);
    CloseHandle(process_.hThread);
    CloseHandle(process_.hProcess);
  }

  bool Writes(const std::string& text) const {
    for (int i = 0; i < 1000 && ReadFile(output_).find(text) == std::string::npos; ++i) Sleep(10);
    return ReadFile(output_).find(text) != std::string::npos;
  }

 private:
  std::string output_;
  PROCESS_INFORMATION process_{};
};

// Walks the help of a command and of all below it; returns how many there are.
int CheckHelp(const Installation& tree, const std::string& command) {
  std::istringstream help(tree.Run(command + " --help").output);
  int count = 1;
  bool listed = false, example = false;
  for (std::string line; std::getline(help, line);) {
    example = example || line.starts_with("Example: kelctl ");
    if (line.ends_with(':')) listed = line != "Options:" && line != "Positionals:";
    if (listed && line.starts_with("  ") && line[2] != ' ')
      count += CheckHelp(tree, command + " " + line.substr(2, line.find(' ', 2) - 2));
  }
  CHECK_MESSAGE(example, command);
  return count;
}

// Checks a document against the parts of a JSON Schema that kelctl's uses.
void CheckForm(const Json& form, const Json& schema, const Json& value, const std::string& place) {
  CAPTURE(place);
  if (form.contains("$ref")) {
    return CheckForm(schema["$defs"].at(form["$ref"].get<std::string>().substr(8)), schema, value, place);
  }
  const std::string type = value.is_number_integer() ? "integer" : value.type_name();
  if (form.contains("type")) {
    CHECK((form["type"].is_array() ? form["type"] : Json::array({form["type"]})).dump().find("\"" + type + "\"") !=
          std::string::npos);
  }
  if (form.contains("enum")) CHECK(form["enum"].dump().find(value.dump()) != std::string::npos);
  const Json required = form.value("required", Json::array());
  for (const auto& name : required) {
    CHECK_MESSAGE(value.contains(name.get<std::string>()), name);
  }
  const Json members = form.value("properties", Json::object());
  for (const auto& [name, inner] : members.items()) {
    if (value.contains(name)) CheckForm(inner, schema, value[name], place + "/" + name);
  }
  if (!value.is_array() || !form.contains("items")) return;
  for (const auto& element : value) CheckForm(form["items"], schema, element, place + "[]");
}

std::string Path(const Installation& tree, const char* relative) { return tree.tree.Path(relative).string(); }

std::string Damaged(const std::string& content, const std::string& damage) {
  if (damage == "empty") return "";
  if (damage == "cut") return content.substr(0, content.size() / 2);
  if (damage == "garbage") return std::string(600, '\xA7');
  if (damage == "no uuid") return "[UUID]\r\nCheckUUID=false\r\n";
  if (damage == "hangs") {  // a jump to itself as the entry point, behind the headers of one page
    std::string hanging = content;
    const auto number = [&](size_t at) { return *reinterpret_cast<const std::uint32_t*>(content.data() + at); };
    const std::uint32_t headers = number(0x3C), code = headers + 0xF8;  // the first section is that of the code
    return hanging.replace(number(headers + 0x28) - number(code + 0xC) + number(code + 0x14), 2, "\xEB\xFE");
  }
  if (damage == "plain") return WholeStore("plain");
  if (damage == "one section") return FakeEnciphered("[AGENT]\r\n");
  if (damage == "no identity") return FakeEnciphered(WholeStore("").substr(0, WholeStore("").size() - 5));
  if (damage == "other agent") return FakeEnciphered(WholeStore("another"));
  if (damage == "64-bit") return std::string("MZ").append(58, '\0') + std::string("\x40\0\0\0PE\0\0\x64\x86", 10);
  if (damage == "jobs") return R"({"version":1,"jobs":[{"id":2}]})";
  if (damage == "tokens") return "KEPLPMNG=e\"C:\\none\\a.exe\"\r\nKEC=C:\\none\\b.dll\r\n";
  std::string other = content;  // of another key
  for (size_t i = 4; i < other.size(); ++i) other[i] = static_cast<char>(other[i] * 7 + 0x80 + i % 5);
  return other;
}

}  // namespace

TEST_CASE("doctor: what it says of each damage, and that it changes nothing") {
  const struct {
    const char* file;
    const char* damage;  // "missing", one of Damaged, or the test library to put in its place
    const char* subject;
    const char* state;
    const char* code;
    const char* detail;
  } rows[] = {
      {"KESAgent/INTEGRA.DAT", "missing", "INTEGRA.DAT", "fail", "STORE-MISSING", "missing"},
      {"KESAgent/INTEGRA.DAT", "empty", "INTEGRA.DAT", "fail", "STORE-DAMAGED", "damaged: 0 of 4 sections"},
      {"KESAgent/INTEGRA.DAT", "cut", "INTEGRA.DAT", "fail", "STORE-DAMAGED", "damaged: 2 of 4 sections, encrypted"},
      {"KESAgent/INTEGRA.DAT", "garbage", "INTEGRA.DAT", "fail", "STORE-DAMAGED", "damaged: 0 of 4 sections"},
      {"KESAgent/INTEGRA.DAT", "other key", "INTEGRA.DAT", "fail", "STORE-NOISE", "decrypts to noise: encrypted with"},
      {"KESAgent/INTEGRA.DAT", "plain", "INTEGRA.DAT", "warn", "STORE-PLAIN", "4 sections, not encrypted"},
      {"KESAgent/INTEGRA.DAT", "no identity", "identity", "fail", "IDENTITY-MISSING",
       "INTEGRA.DAT has no agent-id, device-id, integrated; the agent-id is in INTEGRA.BAK and INTEGRA.START"},
      {"KESAgent/INTEGRA.DAT", "folder", "INTEGRA.DAT", "unknown", "DENIED",
       "cannot be opened or read (Windows error 5: "},  // what Windows says of a folder, and of a lack of rights
      {"KESAgent/INTEGRA.DAT", "locked", "INTEGRA.DAT", "fail", "FILE-LOCKED",
       "cannot be opened or read (Windows error 32: "},
      {"KESAgent/INTEGRA.BAK", "missing", "INTEGRA.BAK", "warn", "STORE-MISSING", "missing"},
      {"KESAgent/INTEGRA.BAK", "cut", "INTEGRA.BAK", "fail", "STORE-DAMAGED", "damaged: 2 of 4 sections, encrypted"},
      {"KESAgent/INTEGRA.BAK", "one section", "INTEGRA.BAK", "fail", "STORE-DAMAGED", "damaged: 1 of 4"},
      {"KESAgent/INTEGRA.BAK", "other agent", "INTEGRA.BAK", "warn", "BACKUP-OLDER", "written "},
      {"KESAgent/INTEGRA.START", "other agent", "INTEGRA.START", "warn", "START-DIFFERS", "written "},
      {"KESAgent/INTEGRA.START", "garbage", "INTEGRA.START", "fail", "STORE-DAMAGED", "damaged: 0 of 4 sections"},
      {"KELUtils/KELUTILS.INI", "missing", "KELUTILS.INI", "warn", "SETTINGS-MISSING", "missing"},
      {"KELUtils/KELUTILS.INI", "missing", "log level", "warn", "LOG-LEVEL-0",
       "the log is at level 0: failures are not"},
      {"KELUtils/KELUTILS.INI", "garbage", "KELUTILS.INI", "fail", "SETTINGS-INVALID", "0 sections"},
      {"KELUtils/KELUTILS.INI", "folder", "KELUTILS.INI", "unknown", "DENIED", "cannot be opened or read"},
      {"KELUtils/KELUTILS.INI", "no uuid", "uuid", "ok", "OK", "the query is switched off"},
      {"KELUtils/KELUtils.dll", "missing", "KELUtils.dll", "fail", "MODULE-MISSING", "missing"},
      {"KELUtils/ApiCr.dll", "missing", "INTEGRA.DAT", "fail", "STORE-NO-CRYPTO", "encrypted, and the crypto module"},
      {"Common/ApiCr.dll", "missing", "ApiCr.dll (files)", "fail", "MODULE-MISSING", "missing"},
      {"Common/KELAGAPI.dll", "garbage", "KELAGAPI.dll", "fail", "MODULE-NOT-LOADED",
       "cannot be loaded (Windows error "},
      {"Common/KELAGAPI.dll", "64-bit", "KELAGAPI.dll", "fail", "MODULE-64-BIT", "is a 64-bit module, and cannot be"},
      {"KELTVEVT/TvEvAPI.dll", "FakeKELMNAPI", "TvEvAPI.dll", "fail", "MODULE-INCOMPLETE", "loaded, lacks"},
      {"Common/TvLogSys.dll", "missing", "TvLogSys.dll", "warn", "MODULE-MISSING", "missing"},
      {"Common/TvLogSys.dll", "FakeKELMNAPI", "TvLogSys.dll", "warn", "MODULE-INCOMPLETE", "loaded, lacks"},
      {"Common/TvLogSys.dll", "hangs", "TvLogSys.dll", "warn", "MODULE-TIMEOUT", "loading it does not end"},
      {"Scheduler/zumat.exe", "missing", "zumat.exe", "fail", "MODULE-MISSING", "missing"},
      {"KepWInst/KepWInst.exe", "garbage", "KepWInst.exe", "fail", "PROGRAM-INVALID",
       "is not a program (Windows error "},
      {"Scheduler/Config/jobs.json", "jobs", "jobs.json", "warn", "JOBS-INCOMPLETE", "1 job, without 4 (KELQTINE)"},
      {"Scheduler/Config/tokens.tok", "tokens", "tokens.tok", "warn", "PROGRAM-UNLISTED",
       "2 names, whose file is missing:"},
  };
  {
    const Installation whole;
    const auto run = whole.Run("doctor");
    INFO(run.output);
    CHECK(run.exitCode == 0);
    CHECK(run.output.find("\x1b") == std::string::npos);  // no colours into a pipe
    CHECK(run.output.find("healthy: ") != std::string::npos);
  }
  for (const auto& row : rows) {
    CAPTURE(std::string(row.file));
    CAPTURE(std::string(row.damage));
    const Installation tree;
    const std::string path = Path(tree, row.file), damage = row.damage, content = ReadFile(path);
    std::filesystem::remove(path);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    if (damage.starts_with("Fake")) {
      tree.tree.AddFake(damage, row.file);
    } else if (damage == "folder") {
      std::filesystem::create_directory(path);
    } else if (damage != "missing") {
      WriteFile(path, damage == "locked" ? content : Damaged(content, damage));
    }
    std::optional<support::LockedFile> lock;
    if (damage == "locked") lock.emplace(path);
    const std::string before = tree.Everything();
    const auto run = tree.Run("doctor --json");
    const Json document = Json::parse(run.output, nullptr, false);
    CHECK(tree.Everything() == before);
    const bool failure = std::string(row.state) == "fail";
    CHECK(run.exitCode == (failure ? 3 : 0));
    CHECK(document["healthy"] == !failure);
    bool found = false;
    int hangs = 0;  // those behind a module that hangs are examined too
    for (const auto& check : document["checks"]) {
      hangs += check["code"] == "MODULE-TIMEOUT";
      if (check["subject"] != row.subject) continue;
      if (check["code"] != row.code) continue;
      found = true;
      CHECK(check["state"] == row.state);
      CHECK_MESSAGE(check["detail"].get<std::string>().starts_with(row.detail), check["detail"].get<std::string>());
      CHECK(check["remedy"].get<std::string>().empty() == (check["state"] == "ok"));
      if (damage == "FakeKELMNAPI" && failure) CHECK(check["missing"].size() == 18);
    }
    CHECK(found);
    CHECK(hangs == (damage == "hangs"));
  }
}

TEST_CASE("doctor: a fresh store is incomplete, and no failure") {
  StoreTree tree;
  tree.Put("INTEGRA.DAT", "[AGENT]\r\nVERSION=1\r\n");
  const auto run = support::RunProgram("\"" + (support::BuildFolder() / "bin" / "kelctl.exe").string() + "\" --dll \"" +
                                       (tree.tree / "KELUtils\\KELUtils.dll") + "\" doctor");
  INFO(run.output);
  CHECK(run.exitCode == 0);
  CHECK(run.output.find("incomplete: 1 of 4 sections, encrypted; nothing is lost") != std::string::npos);
  CHECK(run.output.find("[INSTALL-PATH-MISSING] ") != std::string::npos);
}

TEST_CASE("doctor: without the rights of an administrator it says so first") {
  const Installation tree;
  TOKEN_LINKED_TOKEN limited{};
  DWORD size = 0;
  HANDLE own = nullptr, token = nullptr;
  REQUIRE(OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &own));
  REQUIRE(GetTokenInformation(own, TokenLinkedToken, &limited, sizeof limited, &size));
  REQUIRE(
      DuplicateTokenEx(limited.LinkedToken, TOKEN_ALL_ACCESS, nullptr, SecurityImpersonation, TokenPrimary, &token));
  std::string line = "cmd /c \"" + tree.CommandLine("doctor") + " >\"" + (tree.tree / "output.txt") + "\"\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  REQUIRE(CreateProcessAsUserA(token, nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                               &process));
  CHECK(WaitForSingleObject(process.hProcess, 60000) == WAIT_OBJECT_0);
  for (const HANDLE handle : {own, limited.LinkedToken, token, process.hProcess, process.hThread}) CloseHandle(handle);
  CHECK(ReadFile(tree.tree.Path("output.txt")).find("not elevated: some findings need an administrator") < 40);
  CHECK(tree.Run("doctor").output.find("not elevated") == std::string::npos);
}

TEST_CASE("jobs: one is run, deleted, and then unknown") {
  const Installation tree;
  WriteFile(tree.tree.Path("KesLpmng/KEPLPMNG.ini"), "[EXIT]\r\nCode=7\r\n");
  CHECK(tree.Run("init \"" + (tree.tree / "") + "\\.\"").exitCode == 0);
  CHECK(tree.Run("jobs period 70 60 KELUPD").exitCode == 0);
  const auto run = tree.Run("jobs run 70");
  CHECK(run.exitCode == 1);
  CHECK_MESSAGE(run.output.find("KepLpMng.exe\" KELUPD") != std::string::npos, run.output);
  CHECK(run.output.ends_with("\nended with exit code 7\n"));
  CHECK(tree.Run("jobs delete 70").output.empty());
  CHECK(tree.Run("jobs run 70").output == "kelctl: there is no job 70: kelctl jobs list\n");
  // A job that ends and leaves a program with its output open.
  WriteFile(tree.tree.Path("Scheduler/Config/tokens.tok"), "KEPLPMNG=e\"C:\\windows\\system32\\cmd.exe\"\r\n");
  support::RunProgram("\"" + Path(tree, "Scheduler/zumat.exe") +
                      "\" -TaskID:71 -addjob:KEPLPMNG:\"/c start /b ping -n 20 127.0.0.1\" -Every:Days:1");
  const DWORD begin = GetTickCount();
  CHECK(tree.Run("jobs run 71").exitCode == 0);
  CHECK(GetTickCount() - begin < 15000);
}

TEST_CASE("kelctl: --trace shows the lines of one command; a password comes from standard input; set warns") {
  const Installation tree;
  const auto settings = tree.tree.Path("KELUtils/KELUTILS.INI");
  WriteFile(settings, "[LOG]\r\nLEVELLOG=0\r\n");
  const std::string traced = tree.Run("--trace get device-id").output;
  CHECK_MESSAGE(traced.find(";20;KELUtils;KE_GetDeviceID;\"Error (1782) return") != std::string::npos, traced);
  CHECK(traced.starts_with("kelctl: KE_GetDeviceID failed"));
  CHECK(ReadFile(settings) == "[LOG]\r\nLEVELLOG=0\r\n");
  CHECK(support::RunProgram("cmd /c \"echo by-input|" + tree.CommandLine("password set -") + "\"").exitCode == 0);
  CHECK(tree.Run("password check by-input").exitCode == 0);
  CHECK(tree.Run("set container 5").output.empty());
  for (const char* file : {"INTEGRA.DAT", "INTEGRA.BAK", "INTEGRA.START"}) {
    WriteFile(tree.tree.Store(file), WholeStore("A-1"));
  }
  std::filesystem::remove(tree.tree.Path("KELUtils/ApiCr.dll"));
  CHECK(tree.Run("set container 5").output == "kelctl: warning: the store is not encrypted: kelctl doctor\n");
}

TEST_CASE("status: the copy in use is the one whose identity the library gives next, and it changes nothing") {
  const char* const rows[][4] = {
      // of live, backup and start copy, and which is in use
      {"good", "good", "good", "live"},        {"missing", "good", "good", "backup"},
      {"missing", "missing", "good", "start"}, {"missing", "missing", "missing", "none"},
      {"missing", "cut", "good", "start"},     {"cut", "good", "good", "start"},
      {"cut", "good", "missing", "backup"},    {"empty", "good", "garbage", "backup"},
      {"garbage", "cut", "garbage", "none"},   {"other key", "missing", "good", "start"},
      {"locked", "good", "good", "none"},      {"missing", "locked", "good", "none"},
      {"cut", "good", "locked", "none"},
  };
  const Installation tree;
  for (const auto& row : rows) {
    std::list<support::LockedFile> locks;
    constexpr const char* kFiles[] = {"INTEGRA.DAT", "INTEGRA.BAK", "INTEGRA.START"};
    constexpr const char* kCopies[] = {"live", "backup", "start"};
    for (int i = 0; i < 3; ++i) {
      const std::string state = row[i];
      const auto path = tree.tree.Store(kFiles[i]);
      const std::string good = FakeEnciphered(WholeStore(kCopies[i]));
      WriteFile(path, state == "good" || state == "locked" ? good : Damaged(good, state));
      if (state == "missing") std::filesystem::remove(path);
      if (state == "locked") locks.emplace_back(path);
    }
    CAPTURE(std::string(row[0]) + ", " + row[1] + ", " + row[2]);
    const std::string before = locks.empty() ? tree.Everything() : "";
    const Json status = tree.Document("status");
    if (locks.empty()) CHECK(tree.Everything() == before);
    CHECK(status["store"]["copy"] == row[3]);
    const bool none = std::string(row[3]) == "none";
    if (!none) CHECK(status["values"]["agent-id"]["value"] == row[3]);
    const std::string id = AgentId(tree.Load());
    CHECK(id == (none ? "(1782)" : row[3]));
  }
}

TEST_CASE("repair: only a whole store is taken, and what is replaced is kept") {
  const Installation tree;
  const auto live = tree.tree.Store("INTEGRA.DAT");
  tree.Put("INTEGRA.BAK", "[A]\r\n[B]\r\n[C]\r\n");
  const std::string before = tree.Everything();
  for (const char* arguments : {"repair --from bak", "repair --dry-run --from bak"}) {
    CHECK(tree.Run(arguments).exitCode == 4);
    CHECK(tree.Run(arguments).output.find("refused: INTEGRA.BAK is not a complete store: 3 of 4 sections") !=
          std::string::npos);
  }
  CHECK(tree.Run("repair --from live").exitCode == 1);
  CHECK(tree.Run("repair --dry-run")
            .output.find("would copy INTEGRA.START over INTEGRA.DAT; the replaced file is kept as "
                         "INTEGRA.DAT.1\n") != std::string::npos);
  CHECK(tree.Everything() == before);
  for (int number = 1; number <= 9; ++number) {
    const std::string replaced = "damaged " + std::to_string(number);
    WriteFile(live, replaced);
    CHECK(tree.Document("repair --from start")["copies"][0]["possible"] == true);
    CHECK(tree.Text("INTEGRA.DAT") == WholeStore("A-1"));
    CHECK(ReadFile(live.string() + "." + std::to_string(number)) == replaced);
  }
  WriteFile(live, FakeEnciphered(std::string(64, '\1')));  // noise
  CHECK(tree.Run("repair --dry-run --from start").exitCode == 4);
  CHECK(tree.Run("set container 1").output.find("refused: INTEGRA.DAT decrypts to noise") != std::string::npos);
  WriteFile(live, "damaged once more");
  CHECK(tree.Run("repair --from start").output.find("up to INTEGRA.DAT.9: delete those") != std::string::npos);
  CHECK(ReadFile(live) == "damaged once more");
  std::filesystem::remove(live);  // nothing to keep
  CHECK(tree.Run("repair --from start").output.ends_with("\ncopied INTEGRA.START over INTEGRA.DAT\n"));
  std::filesystem::remove(live.string() + ".1");
  const auto fails = [&](const std::string& arguments, unsigned exitCode, const char* output) {
    const std::string all = tree.Everything();
    const auto run = tree.Run(arguments);
    CHECK(run.exitCode == exitCode);
    CHECK_MESSAGE(run.output.find(output) != std::string::npos, run.output);
    CHECK(tree.Everything() == all);  // nothing is left behind
  };
  for (const DWORD share :
       {DWORD{0}, DWORD{FILE_SHARE_READ}}) {  // cannot be read; cannot be replaced, as on a full disk
    const support::LockedFile lock(live, share);
    fails("repair --from start", 1, "cannot copy INTEGRA.");
  }
  {
    const support::LockedFile lock(tree.tree.Store("INTEGRA.LCK"));
    fails("repair --from start", 4, "refused: another program is changing the store; try again");
  }
  SetFileAttributesW(live.c_str(), FILE_ATTRIBUTE_READONLY);
  CHECK(tree.Run("doctor").output.find("[READ-ONLY] ") != std::string::npos);
  fails("repair --from start", 4, "INTEGRA.DAT is read-only; --writable clears the attribute");
  fails("repair --from start --dry-run", 4, "INTEGRA.DAT is read-only; --writable clears the attribute");
  CHECK(tree.Run("repair --from start --writable").exitCode == 0);
  for (const char* kept : {"", ".1"}) {
    CHECK((GetFileAttributesW((live.wstring() + std::filesystem::path(kept).wstring()).c_str()) &
           FILE_ATTRIBUTE_READONLY) == 0);
  }
}

TEST_CASE("diagnostics: no secret of store, settings and log is in the archive") {
  const Installation tree;
  const auto set = [&](const std::string& arguments) { CHECK(tree.Run(arguments).exitCode == 0); };
  set("set certificate old-Certificate");  // stays in the log alone
  set("set certificate new-Certificate");
  set("password set hunter2hunter");
  set("set rcm-password plain-rcm-word");
  set("set property:LicenceKey lic-4711");
  set("proxy set h 3128 --user u --password throughTheWall");
  const std::string setting = tree.Run("setting encrypt throughTheWall").output.substr(0, 24);
  const auto log = tree.tree.Path("KELUtils/KELUtils.log");
  const std::string line = "2024/03/05 07:08:09.010;1;2;20;K;F;";
  WriteFile(log, ReadFile(log) + line + "\"CreateProcess failed [a.exe -password word-of-a-command\"\r\n" + line +
                     "\"hunter2hunter, lic-4711\"\r\n");
  WriteFile(tree.tree.Path("KELUtils/KELUtils.log.old"), "cut-Certificate\r\n" + line + "\"older\"\r\n");
  WriteFile(tree.tree.Path("KELUtils/KELUTILS.INI"),
            "[LOG]\r\nLEVELLOG=20\r\nProxyPassword=ini-word\r\nNote=ini-word!\r\n [Keys]\r\nx=key-word\r\n");
  WriteFile(tree.tree.Path("Scheduler/zumat.log"), "proxy h:80:u:scheduler-word\r\njob done\r\n");
  set("set last-error-param -- \"-p param-word\"");
  for (const char* secret : {"old-Certificate", "new-Certificate", "plain-rcm-word", "lic-4711", setting.c_str()}) {
    CHECK_MESSAGE(ReadFile(log).find(secret) != std::string::npos, secret);  // the case has something to find
  }
  const std::string before = tree.Everything();
  const Json shown = tree.Document("diagnostics \"" + (tree.tree / "..\\kelctl-test.zip") + "\"");
  CHECK(tree.Everything() == before);
  const std::string zip = ReadFile(tree.tree.Path("../kelctl-test.zip"));  // stored: what is in it is in the bytes
  for (const char* secret : {"old-Certificate", "new-Certificate", "cut-Certificate", "hunter2hunter", "plain-rcm-word",
                             "lic-4711", "throughTheWall", setting.c_str(), "word-of-a-command", "ini-word", "key-word",
                             "scheduler-word", "param-word", "writing integra.dat:\n"}) {
    CHECK_MESSAGE(zip.find(secret) == std::string::npos, secret);
    CHECK_MESSAGE(tree.Run("log -n 9999").output.find(secret) == std::string::npos, secret);
  }
  for (const char* kept : {"LEVELLOG=20\r\n", "ProxyPassword=********\r\n", "\"older\"", "\"agent-id\"", "\"healthy\"",
                           "zumat.exe", "job done", "\"sha256\""}) {
    CHECK_MESSAGE(zip.find(kept) != std::string::npos, kept);
  }
  for (const auto& name : shown["entries"]) CHECK(zip.find(name.get<std::string>()) != std::string::npos);
  CHECK(tree.Run("diagnostics \"" + (tree.tree / "..\\kelctl-test.zip") + "\"").exitCode ==
        4);  // never over another file
  CHECK(tree.Run("log -n 9999 --reveal").output.find("old-Certificate") != std::string::npos);
  CHECK(tree.Document("status")["errors"].back()["description"] == "CreateProcess failed [a.exe -password ********");
  std::filesystem::remove(tree.tree.Path("../kelctl-test.zip"));
}

TEST_CASE("log: follows what is appended, also over a rotation") {
  const Installation tree;
  const auto log = tree.tree.Path("KELUtils/KELUtils.log");
  const auto line = [](int number) {
    return "2024/03/05 07:08:09.010;1;2;10;K;F;\"line " + std::to_string(number) + "\"\r\n";
  };
  WriteFile(log.string() + ".old", line(1));
  WriteFile(log, line(2));
  const std::string output = tree.tree / "output.txt";
  const Started program(tree.CommandLine("log -f -n 2"), output);
  CHECK(program.Writes("line 1\"\r\n"));
  CHECK(program.Writes("line 2\"\r\n"));
  // As a trace library does: a file that is written anew is empty for a moment, and then read from its beginning.
  const auto append = [&](int number) { std::ofstream(log, std::ios::binary | std::ios::app) << line(number); };
  append(3);
  CHECK(program.Writes("line 3\"\r\n"));
  append(4);
  std::filesystem::rename(log, log.string() + ".old");
  WriteFile(log, line(5));
  CHECK(program.Writes("line 5\"\r\n"));
  std::string expected;
  for (int number = 1; number <= 5; ++number) expected += line(number);
  CHECK(ReadFile(output) == expected);
}

TEST_CASE("kelctl: every command has an example in its help") {
  const Installation tree;
  CHECK(CheckHelp(tree, "") > 50);
}

TEST_CASE("kelctl: with --json every answer has the form that the schema gives it, errors too") {
  const Installation tree;
  const Json schema = Json::parse(ReadFile(support::BuildFolder() / "bin" / "kelctl.schema.json"));
  const auto check = [&](const std::string& arguments, const std::string& form) {
    CAPTURE(arguments);
    const Json document = tree.Document(arguments);
    CheckForm(schema, schema, document, "");
    CheckForm(schema["$defs"][form], schema, document, "");
  };
  for (const char* command : {"show", "status", "doctor", "log", "os", "uuid", "log level", "proxy show", "proxy inet",
                              "policy list", "jobs list", "event list"}) {
    check(command, command);
  }
  constexpr const char* kRows[][2] = {
      {"get certificate", "get"},
      {"get property:x", "error"},
      {"get device-id", "error"},
      {"get nothing", "error"},
      {"nothing", "error"},
      {"set container", "error"},
      {"jobs run 999", "error"},
      {"setting encrypt support", "setting encrypt"},
      {"setting decrypt x", "setting decrypt"},
      {"password check no", "password check"},
      {"can-run other", "can-run"},
      {"update config get A B", "update config get"},
      {"repair --dry-run", "repair"},
      {"repair --from bak", "repair"},
      {"explain DENIED", "explain"},
      {"explain 1782", "explain"},
  };
  for (const auto& [arguments, form] : kRows) check(arguments, form);
  CHECK(tree.Run("jobs delete-next-boot --json").output.empty());
  const std::string values = "\"" + (tree.tree / "values.dat") + "\" A B";
  CHECK(tree.Run("file set " + values + " \"x \\\"y\\\"\"").exitCode == 0);
  CHECK(tree.Document("file get " + values)["value"] == "x \"y\"");
}
