// The modules and programs of the product, their settings files, and where the product is installed.
#include <doctest/doctest.h>

#include <cstdlib>
#include <fstream>
#include <vector>

#include "policy/os_identification.h"
#include "policy/policy_fixture.h"
#include "siblings/modules.h"
#include "siblings/programs.h"
#include "siblings/settings_file.h"
#include "support/fake_sibling.h"
#include "support/handles.h"
#include "support/inner_module.h"
#include "trace/trace.h"

using namespace siblings;
using support::Wide;

namespace {

constexpr char kChildVariable[] = "KELUTILS_TEST_CHILD";

// A child of these tests is this program: instead of testing, it notes its command line in the file that the variable
// names and ends with the digit that the line ends in; or it sleeps.
const bool g_child = [] {
  const char* const note = std::getenv(kChildVariable);
  if (note == nullptr) return false;
  const std::string line = GetCommandLineA();
  if (line.find("-sleep") != std::string::npos) Sleep(1000), ExitProcess(0);
  std::ofstream(note, std::ios::binary) << line;
  ExitProcess(line.find("-exit:") == std::string::npos ? 0 : static_cast<UINT>(line.back() - '0'));
}();

// A traced tree that can be the DLL's, where children note their command lines.
struct SiblingTree : support::ProductTree {
  SiblingTree() { TurnLogOn(); }
  std::string Note() const { return support::ReadFile(Path("note")); }
  const std::string own = (support::TestFolder() / "unit_tests.exe").string();
  const support::EnvironmentVariable child{kChildVariable, Path("note").string().c_str()};
  const support::InnerModule module{*this};
};

#define NAME(name, presence) #name,

}  // namespace

TEST_CASE("binding: a module that lacks a required name is bound, or one that lacks an optional name is not") {
  const support::ProductTree tree;
  const std::string folder = tree / "Common\\";
  // An incomplete event module stays loaded; it is freed so that the next copy can be put in its place.
  const auto freeEvents = [] {
    while (const HMODULE left = GetModuleHandleA("TvEvAPI.dll")) FreeLibrary(left);
  };
  const auto check = [&](const std::string& file, std::vector<std::string> names, size_t optional, auto load,
                         auto free) {
    CAPTURE(file);
    const std::string whole = support::ReadFile(support::TestFolder() / ("Fake" + file));
    CHECK_FALSE((load(nullptr) || load(std::string(2048, 'x').c_str()) || load(folder.c_str())));
    for (size_t i = 0; i < names.size(); ++i) {
      CAPTURE(names[i]);
      support::WriteFile(tree.Path("Common/" + file), Without(whole, names[i]));
      CHECK(load(folder.c_str()) == (i < optional));
      free();
    }
    support::WriteFile(tree.Path("Common/" + file), whole);
    CHECK((load(folder.c_str()) && load(folder.c_str())));
    free();
    free();
    CHECK(GetModuleHandleA(file.c_str()) == nullptr);
  };
  check("KELAGAPI.dll", {KE_AGENT_API_FUNCTIONS(NAME, NAME)}, 6, LoadAgentApi, FreeAgentApi);
  check("KERegister.dll", {KE_PLUGIN_RELOAD_FUNCTIONS(NAME, NAME)}, 0, LoadPluginReload, FreePluginReload);
  check("KELMNAPI.dll", {KE_LAUNCHER_FUNCTIONS(NAME, NAME)}, 0, LoadLauncher, FreeLauncher);
  const auto loadEvents = [](const char* from) { return static_cast<bool>(EventApiScope(from)); };
  check("TvEvAPI.dll", {KE_EVENT_API_FUNCTIONS(NAME, NAME)}, 0, loadEvents, freeEvents);
}

TEST_CASE("sink: a line of another level, or a long text that is not cut") {
  support::RecordingSink sink;
  sink.level = 30;
  for (const std::uint32_t level : {30u, 31u}) {
    policy::SinkTrace(&sink, level, 1, L"f", L"%ls %d", L"t", level);
    policy::SinkError(&sink, level, 1, L"f", 7, 8, L"e");
  }
  sink.failure = 1;
  policy::SinkError(&sink, 30, 1, L"f", 7, 8, L"e");
  policy::SinkError(&sink, 20, 1, L"f", 7, 8, L"%ls", std::wstring(4096, L'x').c_str());
  CHECK((sink.lines == L"30 t 30\n30 e <7 8>\n20 " + std::wstring(4095, L'x') + L" <7 8>\n"));
  policy::VersionRecord version;
  REQUIRE(policy::GetVersionRecord(version));
  CHECK((policy::GetOsCode() != 0 && policy::IdentifiedOs().major == version.major));
  policy::DumpVersionInfo(&(sink = {}), version);
  CHECK(sink.lines.find(L"30 - dwMajorVersion: " + std::to_wstring(version.major) + L"\n") != std::string::npos);
}

TEST_CASE("LanzarProceso: another command line, result or sink line; a handle that is left over, also of a sibling") {
  const SiblingTree tree;
  const std::wstring own = Wide(tree.own), quoted = L"\"" + own + L"\"";
  const std::tuple<std::wstring, const wchar_t*, DWORD, std::uint32_t, std::wstring, std::wstring> rows[] = {
      {own, nullptr, INFINITE, 0, quoted, L"Launching program (" + quoted + L" (null))"},
      {own, L"a \"b\" ", 60000, 0, quoted + L" a \"b\" ", L"Launching program (" + quoted + L" a \"b\" )"},
      {own, L"-sleep", 0, 40, L"", L" \"-sleep\") - (WaitForSingleObject): 258 <40 258>\n"},
      {L"no.exe", L"x", 0, 40, L"", L"20 Error launching program (\"no.exe\" \"x\") - (CreateProcess): 2 <40 2>\n"}};
  DWORD handles[3];
  for (DWORD& count : handles) {
    for (const auto& [program, parameters, timeout, result, noted, line] : rows) {
      support::RecordingSink sink;
      PROCESS_INFORMATION started{nullptr, nullptr, 1, 1};
      CHECK(policy::LanzarProceso(&sink, program.c_str(), parameters, nullptr, true, &started, timeout,
                                  CREATE_NO_WINDOW) == result);
      CHECK((GetProcessId(started.hProcess) == started.dwProcessId && !started.dwProcessId == (result != 0)));
      const win::Process closing(started);
      CHECK(((noted.empty() || Wide(tree.Note()) == noted) && sink.lines.find(line) != sink.lines.npos));
    }
    CHECK(policy::LanzarProceso(nullptr, own.c_str(), L"-sleep", nullptr, false, nullptr, 0, 0) == 0);
    const SiblingProgram sibling{"KE_Ask", "a -exit:1", {.application = tree.own.c_str()}};
    CHECK(StartAndWait(sibling, INFINITE, 2, count) == KE_SUCCESS);
    const std::string sleeping = "\"" + tree.own + "\" -sleep";
    CHECK(WaitForProgram("KE_Ask", StartInBackground("KE_Ask", {"\"C:\\none.exe\"", sleeping}), 0) == WAIT_TIMEOUT);
    count = support::OpenHandles();
  }
  CHECK(handles[2] == handles[0]);
}

TEST_CASE("sibling programs: another result, one from the current folder, or a failure without its trace") {
  const SiblingTree tree;
  const trace::TraceScope scope;
  const auto check = [&](const char* application, const std::string& command, KE_RESULT result, DWORD answer,
                         const std::string& trace) {
    DWORD answered = 99;
    const SiblingProgram program{"KE_Ask", command, {.application = application}};
    CHECK(StartAndWait(program, result == KE_NOT_CREATED ? 0 : INFINITE, 2, answered) == result);
    CHECK((answered == answer && (trace.empty() || tree.Traced("KE_Ask;\"" + trace + "\""))));
  };
  check(tree.own.c_str(), "any name -exit:2", KE_SUCCESS, 2, "");
  check(tree.own.c_str(), "a -exit:3", KE_PROMPT_FAILED, 99, "Process failed [Command = a -exit:3] [Result = 3]");
  check(tree.own.c_str(), "a -sleep", KE_NOT_CREATED, 99, "Wait failed [Result = 258]");
  // It is there, but the name is not a full path.
  const support::CurrentFolder current(support::TestFolder());
  check("unit_tests.exe", "no -x", KE_PROGRAM_NOT_STARTED, 99, "CreateProcess failed [Command = no -x]");
  CHECK_FALSE(StartInBackground("KE_Ask", {"\"C:\\none.exe\" -1", "\"unit_tests.exe\" -2", "unit_tests.exe -3"}));
  CHECK(tree.Traced("KE_Ask;\"CreateProcess failed [Command = unit_tests.exe -3]\""));
  CHECK(tree.Log().find("none.exe") == std::string::npos);
}

TEST_CASE("settings file: another file, a value that is cut, or a text that Windows may crash on") {
  const SiblingTree tree;
  const std::string full = tree / "KESAgent\\Full.ini";
  const char* files[][2] = {
      {"", "KELUtils/KELUTILS.INI"}, {"Other.ini", "KELUtils/Other.ini"}, {full.c_str(), "KESAgent/Full.ini"}};
  std::filesystem::remove(tree.Path(files[0][1]));
  for (const auto& [file, place] : files) {
    CHECK(SetMyConfigIniValue(nullptr, "K", "v", file) == KE_MISSING_ARGUMENT);
    CHECK_FALSE(std::filesystem::exists(tree.Path(place)));
    CHECK(SetMyConfigIniValue("S", "K", std::string(5000, 'v').c_str(), file) == KE_SUCCESS);
    CHECK(GetMyConfigIniValue("S", "K", file) == std::string(4099, 'v'));
    // The write fails, which is not reported, and the read finds nothing.
    CHECK(SetMyConfigIniValue("S", std::string(32767, 'k').c_str(), "v", file) == KE_SUCCESS);
    CHECK(std::filesystem::file_size(tree.Path(place)) == 5000 + std::string("[S]\r\nK=\r\n").size());
    CHECK(GetMyConfigIniValue(std::string(32767, 's').c_str(), "K", file).empty());
    CHECK((SetMyConfigIniValue("S", "K", nullptr, file) == KE_SUCCESS && GetMyConfigIniValue("S", "K", file).empty()));
  }
}

TEST_CASE("product info: a path past its bounds, of another type, or not that of the environment") {
  const auto cleared = [] { return RegDeleteTreeA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Tavrin Security"); };
  const auto set = [](const char* key, const char* name, const std::string& text, DWORD type) {
    const std::string path = std::string("SOFTWARE\\Tavrin Security\\") + key;
    REQUIRE(RegSetKeyValueA(HKEY_LOCAL_MACHINE, path.c_str(), name, type, text.c_str(), text.size() + 1) == 0);
  };
  const auto path = [](const char* variable = "") {
    return std::string(kelcrt::CProductInfo(variable).GetInstallPath());
  };
  cleared();
  CHECK(path().empty());
  for (const std::string name : {"", "Orvane Endpoint"}) {
    set("SetupEx\\Orvane", "ProductName", name, REG_SZ);
    CHECK(kelcrt::CProductInfo().GetProductName() == (name.empty() ? "Tavrin Security Agent" : name));
  }
  const std::string longName(300, 'N'), fits(259, 'p');
  const support::EnvironmentVariable drive("KE_DRIVE", "C:"), named(longName.c_str(), "C:\\Long\\"),
      most("KE_MOST", fits.substr(1).c_str());
  const std::tuple<DWORD, std::string, std::string> rows[] = {{REG_SZ, fits, fits},
                                                              {REG_SZ, fits + "p", ""},
                                                              {REG_DWORD, "123", ""},
                                                              {REG_EXPAND_SZ, "%" + longName + "%", "C:\\Long\\"},
                                                              {REG_EXPAND_SZ, "p%KE_MOST%", fits},
                                                              {REG_EXPAND_SZ, "pp%KE_MOST%", ""},
                                                              {REG_EXPAND_SZ, std::string(40000, 'p'), ""},
                                                              {REG_EXPAND_SZ, "%KE_DRIVE%\\O\\", "C:\\O\\"}};
  for (const auto& [type, stored, expected] : rows) {
    set("Orvane\\ClientSystem", "InstallPath", stored, type);
    CHECK(path() == expected);
  }
  for (const auto& [value, expected] :
       {std::pair<std::string, std::string>{fits, fits}, {fits + "p", "C:\\O\\"}, {"", "C:\\O\\"}}) {
    const support::EnvironmentVariable testing("VOSK_TESTING_INSTALLPATH", value.c_str());
    CHECK((path("VOSK_TESTING_INSTALLPATH") == expected && path() == "C:\\O\\"));  // as in a build for customers
  }
  CHECK(cleared() == 0);
}
