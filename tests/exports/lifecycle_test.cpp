#include <doctest/doctest.h>

#include <cstdlib>
#include <string>

#include "exports/store_tree.h"

using support::LoadedDll;

TEST_CASE("module directory: the folder of a similar name is used for one that the code page has no name for") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", WholeStore("agent"));
  tree.tree.TurnLogOn();
  const struct {
    const wchar_t* folder;
    bool known;
    bool oem = false;  // whether the host takes file names in the OEM code page
  } rows[] = {{L"A", true}, {L"\u00C4", true}, {L"\u00D6", false, true}, {L"\uFF21", false}, {L"\u65E5\u672C", false}};
  const support::Folder root;
  REQUIRE(GetACP() == 1252);
  for (const auto& row : rows) {
    CAPTURE(std::to_string(row.folder[0]));
    const auto path = root.Path("") / row.folder;
    std::filesystem::copy(tree.tree.Path("KELUtils").parent_path(), path, std::filesystem::copy_options::recursive);
    if (row.oem) SetFileApisToOEM();
    {
      const LoadedDll dll(path / "KELUtils/KELUtils.dll");
      CHECK(AgentId(dll) == (row.known ? "agent" : "(1781)"));
      if (!row.known) {
        // What a letter like this one is replaced by names the first folder, which stays as it is.
        CHECK(CALL(dll, KE_SetAgentID)("other") == KE_NO_MODULE_DIRECTORY);
        CHECK(CALL(dll, KE_RemovePlugin)("KEC", "KELUtils") == KE_NO_MODULE_DIRECTORY);
        CHECK(CALL(dll, KE_SetURLSecureServer)("https://s") == KE_NO_MODULE_DIRECTORY);
        CHECK(CALL(dll, KE_SetURLServer)("https://s") == KE_AGENT_NOT_LOADED);
        CHECK(CALL(dll, KE_LaunchKEPWInst)() == KE_INSTALL_HELPER_NOT_STARTED);
      }
    }
    SetFileApisToANSI();
    CHECK(std::filesystem::exists(path / "KELUtils/KELUtils.log") == row.known);
    std::filesystem::remove(path / "KELUtils/KELUtils.log");
    CHECK_FALSE(std::filesystem::exists(root.Path("A/KELUtils/KELUtils.log")));
  }
  for (const char* file : {"KESAgent/KE_AGPRX.dat", "KELUtils/KELUtils.ini"})
    CHECK(support::ReadFile(root.Path("A") / file) == support::ReadFile(tree.tree.Path(file)));
}

TEST_CASE("end of the process: a host that ends with a thread inside a call hangs") {
  // Runs in a child: this program, told to run the case below.
  const support::ProductTree tree;
  const support::EnvironmentVariable dllPath("KELUTILS_TEST_DLL", tree.Path("KELUtils/KELUtils.dll").string().c_str());
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, sizeof self);
  const support::EnvironmentVariable noProgress("KELUTILS_TEST_PROGRESS", nullptr);
  CHECK(support::RunProgram("\"" + std::string(self) + "\" --no-skip -tc=\"child: ends inside a call\"").exitCode ==
        77);
}

static DWORD WINAPI SetForEver(void* dll) {
  for (;;) CALL(*static_cast<LoadedDll*>(dll), KE_SetAgentID)("agent");
}

TEST_CASE("child: ends inside a call" * doctest::skip()) {
  static LoadedDll dll(std::getenv("KELUTILS_TEST_DLL"));
  CloseHandle(CreateThread(nullptr, 0, SetForEver, &dll, 0, nullptr));
  Sleep(200);
  ExitProcess(77);
}
