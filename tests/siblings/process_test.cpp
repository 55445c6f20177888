#include <doctest/doctest.h>

#include <cstdlib>
#include <fstream>

#include "policy/os_identification.h"
#include "policy/policy_fixture.h"
#include "siblings/programs.h"
#include "support/handles.h"
#include "support/inner_module.h"
#include "trace/trace.h"

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

using support::Wide;

// A traced tree, and where children note their command lines.
struct ChildTree : support::ProductTree {
  ChildTree() { TurnLogOn(); }
  std::string Note() const { return support::ReadFile(Path("note")); }
  const std::string own = (support::TestFolder() / "unit_tests.exe").string();
  const support::EnvironmentVariable child{kChildVariable, Path("note").string().c_str()};
  const support::InnerModule module{*this};
};

using Sink = support::RecordingSink;

}  // namespace

TEST_CASE("sink: levels decide what is written, and long texts are cut") {
  Sink sink;
  sink.level = 30;
  for (const std::uint32_t level : {30u, 31u}) {
    policy::SinkTrace(&sink, level, 1, L"f", L"%ls %d", L"t", level);
    policy::SinkError(&sink, level, 1, L"f", 7, 8, L"e");
  }
  sink.failure = 1;
  policy::SinkError(&sink, 30, 1, L"f", 7, 8, L"e");
  policy::SinkError(&sink, 20, 1, L"f", 7, 8, L"%ls", std::wstring(4096, L'x').c_str());
  CHECK((sink.lines == L"30 t 30\n30 e <7 8>\n20 " + std::wstring(4095, L'x') + L" <7 8>\n"));
}

TEST_CASE("LanzarProceso: command line, result, handles and sink lines") {
  const ChildTree tree;
  const std::wstring own = Wide(tree.own);
  const auto check = [&](const std::wstring& program, const wchar_t* parameters, bool wait, DWORD timeout,
                         const wchar_t* error) {
    const std::wstring quoted = L"\"" + program + L"\"", shown = parameters ? parameters : L"(null)";
    Sink sink;
    PROCESS_INFORMATION started{nullptr, nullptr, 1, 1};
    CHECK(policy::LanzarProceso(&sink, program.c_str(), parameters, nullptr, wait, &started, timeout,
                                CREATE_NO_WINDOW) == (*error ? 40 : 0));
    CHECK((GetProcessId(started.hProcess) == started.dwProcessId && !started.dwProcessId == (*error != 0)));
    const win::Process closing(started);
    if (wait && !*error) CHECK((Wide(tree.Note()) == (parameters ? quoted + L" " + shown : quoted)));
    const std::wstring failure = L"20 Error launching program (" + quoted + L" \"" + shown + L"\") - (" + error + L"\n";
    CHECK((sink.lines.find(*error ? failure : L"Launching program (" + quoted + L" " + shown) != sink.lines.npos));
  };
  DWORD handles[3];
  for (DWORD& count : handles) {
    check(own, nullptr, true, INFINITE, L"");
    check(own, L"a \"b\" ", true, 60000, L"");
    check(own, L"-sleep", true, 0, L"WaitForSingleObject): 258 <40 258>");
    check(L"no.exe", L"x", true, 0, L"CreateProcess): 2 <40 2>");
    CHECK(policy::LanzarProceso(nullptr, own.c_str(), L"-sleep", nullptr, false, nullptr, 0, 0) == 0);
    const siblings::SiblingProgram sibling{"KE_Ask", "a -exit:1", {.application = tree.own.c_str()}};
    CHECK(siblings::StartAndWait(sibling, INFINITE, 2, count) == KE_SUCCESS);
    const std::string sleeping = "\"" + tree.own + "\" -sleep";
    const win::Process inBackground = siblings::StartInBackground("KE_Ask", {"\"C:\\none.exe\"", sleeping});
    CHECK(siblings::WaitForProgram("KE_Ask", inBackground, 0) == WAIT_TIMEOUT);
    count = support::OpenHandles();
  }
  CHECK(handles[2] == handles[0]);
}

TEST_CASE("sibling programs: the answer of one that is waited for, and the traces of a failure") {
  const ChildTree tree;
  const trace::TraceScope scope;
  const auto check = [&](const char* application, const std::string& command, KE_RESULT result, DWORD answer,
                         const std::string& trace) {
    DWORD answered = 99;
    const siblings::SiblingProgram program{"KE_Ask", command, {.application = application}};
    CHECK(siblings::StartAndWait(program, result == KE_NOT_CREATED ? 0 : INFINITE, 2, answered) == result);
    CHECK(answered == answer);
    if (result != KE_SUCCESS) CHECK(tree.Traced("KE_Ask;\"" + trace + "\""));
  };
  check(tree.own.c_str(), "any name -exit:2", KE_SUCCESS, 2, "");
  check(tree.own.c_str(), "a -exit:3", KE_PROMPT_FAILED, 99, "Process failed [Command = a -exit:3] [Result = 3]");
  check(tree.own.c_str(), "a -sleep", KE_NOT_CREATED, 99, "Wait failed [Result = 258]");
  // It is there, but the name is not a full path.
  const support::CurrentFolder current(support::TestFolder());
  check("unit_tests.exe", "no -x", KE_PROGRAM_NOT_STARTED, 99, "CreateProcess failed [Command = no -x]");
  CHECK_FALSE(
      siblings::StartInBackground("KE_Ask", {"\"C:\\none.exe\" -1", "\"unit_tests.exe\" -2", "unit_tests.exe -3"}));
  CHECK(tree.Traced("KE_Ask;\"CreateProcess failed [Command = unit_tests.exe -3]\""));
  CHECK(tree.Log().find("none.exe") == std::string::npos);
  const std::string command = "\"" + tree.own + "\" " + std::string(9000, 'x');
  CHECK(siblings::StartInBackground("KE_Ask", {command}).Wait(60000) == WAIT_OBJECT_0);
  CHECK(tree.Note() == command.substr(0, 8198));
}

TEST_CASE("actions: the module's answer, and modules that cannot be used") {
  const ChildTree tree;
  const trace::TraceScope scope;
  tree.AddDevkit("KELUPG.dll", "KELUPG");
  tree.AddFake("FakeKERegister", "NODO/NODO.dll");
  CHECK(siblings::ExecuteLocalProcessAction("KELUPG", 3, 7) == 17);
  CHECK(support::ReadFile(tree.Path("KELUPG/KELUPG.log")).find(";3;7\r\n") != std::string::npos);
  CHECK(siblings::ExecuteLocalProcessAction(nullptr, 1, 0) == KE_OUT_OF_RANGE);
  for (const char* name : {"NODO", "MISSING"}) CHECK(siblings::ExecuteLocalProcessAction(name, 1, 0) == 1801);
  for (const char* file : {"KELUPG.dll", "NODO.dll"}) CHECK(GetModuleHandleA(file) == nullptr);
}

TEST_CASE("the running Windows is identified") {
  policy::VersionRecord version;
  REQUIRE(policy::GetVersionRecord(version));
  CHECK((policy::GetOsCode() != 0 && policy::IdentifiedOs().major == version.major));
  BOOL wow64 = FALSE;
  CHECK((IsWow64Process(GetCurrentProcess(), &wow64) && policy::IsOs64Bit() == (wow64 != FALSE)));
  Sink sink;
  policy::DumpVersionInfo(&sink, version);
  CHECK(sink.lines.find(L"30 - dwMajorVersion: " + std::to_wstring(version.major) + L"\n") != std::string::npos);
}
