#include <doctest/doctest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "exports/store_tree.h"
#include "support/handles.h"

using support::LoadedDll;

namespace {

// How far the process's handles reach: new handles fill the gaps first, so the last of a few grows with every leak.
// (Wine does not count a process's handles.)
size_t HighestHandle() {
  size_t highest = 0;
  std::vector<HANDLE> events(16);
  for (HANDLE& event : events) event = CreateEventA(nullptr, FALSE, FALSE, nullptr);
  for (const HANDLE event : events) {
    highest = std::max(highest, reinterpret_cast<size_t>(event));
    CloseHandle(event);
  }
  return highest;
}

DWORD WINAPI RunThread(void* work) {
  (*static_cast<std::function<void()>*>(work))();
  return 0;
}

HANDLE StartThread(std::function<void()>& work) { return CreateThread(nullptr, 0, RunThread, &work, 0, nullptr); }

}  // namespace

TEST_CASE(
    "life cycle: loading, using and unloading leave no handle and no TLS slot behind, even with exceptions inside") {
  const support::ProductTree tree, large;
  tree.AddDevkit("TvLogSys.dll", "Common");
  support::WriteFile(tree.Path("KELUtils/KELUTILS.INI"), "[LOG]\r\nLEVELLOG=10\r\n");
  support::WriteFile(large.Store("INTEGRA.DAT"), "");
  std::filesystem::resize_file(large.Store("INTEGRA.DAT"), 3LL << 30);  // more than there is memory for
  const auto cycle = [](const support::ProductTree& in, KE_RESULT expected) {
    const LoadedDll dll(in.Path("KELUtils/KELUtils.dll"));
    char buffer[64];
    CHECK(CALL(dll, KE_GetContainer)(buffer, sizeof buffer) == expected);
  };
  for (int i = 0; i < 10; ++i) cycle(tree, KE_SUCCESS);
  const size_t handles = HighestHandle(), slots = support::FreeSlots();
  for (int i = 0; i < 1000; ++i) cycle(tree, KE_SUCCESS);
  for (int i = 0; i < 100; ++i) cycle(large, KE_EXCEPTION);
  CHECK(HighestHandle() <= handles + 64);
  CHECK(support::FreeSlots() == slots);
  CHECK(GetModuleHandleA("KELUtils.dll") == nullptr);
}

TEST_CASE("module directory: one that has no name in the code page is unknown, and nothing is used in its place") {
  const StoreTree tree;
  tree.Put("INTEGRA.DAT", WholeStore("agent"));
  tree.tree.AddDevkit("TvLogSys.dll", "Common");
  support::WriteFile(tree.tree.Path("KELUtils/KELUTILS.INI"), "[LOG]\r\nLEVELLOG=20\r\n");
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
        CHECK(CALL(dll, KE_AddPlugin)("K", "KELUtils", "v") == KE_NO_MODULE_DIRECTORY);
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

TEST_CASE("random numbers: the host's own are left alone by loading the library and by its jobs") {
  const support::ProductTree tree;
  std::srand(1);
  const int first = std::rand();
  std::srand(1);
  {
    const LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
    CHECK(CALL(dll, KE_SetPeriodicTask)("P", "M", "", 4, 60, 1) == KE_SCHEDULER_NOT_STARTED);
    CHECK(CALL(dll, KE_ScheduleDefaultTasks)() == KE_INSTALL_HELPER_NOT_STARTED);
  }
  CHECK(std::rand() == first);
}

TEST_CASE("threads: getting and setting at once never shows a torn value") {
  const support::ProductTree tree;
  const LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
  const std::string values[] = {std::string(3, 'a'), std::string(40, 'b'), std::string(500, 'c')};
  REQUIRE(CALL(dll, KE_SetContainer)(values[0].c_str()) == KE_SUCCESS);
  std::atomic<int> failures = 0;
  std::function<void()> work = [&] {
    for (int i = 0; i < 50; ++i) {
      failures += CALL(dll, KE_SetContainer)(values[i % 3].c_str()) != KE_SUCCESS;
      char buffer[600];
      const bool read = CALL(dll, KE_GetContainer)(buffer, sizeof buffer) == KE_SUCCESS;
      failures += !read || std::find(values, values + 3, buffer) == values + 3;
    }
  };
  HANDLE threads[6];
  for (HANDLE& thread : threads) thread = StartThread(work);
  CHECK(WaitForMultipleObjects(6, threads, TRUE, 120000) == WAIT_OBJECT_0);
  for (const HANDLE thread : threads) CloseHandle(thread);
  CHECK(failures == 0);
}

TEST_CASE(
    "end of the process: a host that ends without freeing the library, with a thread inside a call, ends at once") {
  // Runs in a child: this program, told to run the case below.
  const support::ProductTree tree;
  const support::EnvironmentVariable dllPath("KELUTILS_TEST_DLL", tree.Path("KELUtils/KELUtils.dll").string().c_str());
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, sizeof self);
  const support::EnvironmentVariable noProgress("KELUTILS_TEST_PROGRESS", nullptr);
  CHECK(support::RunProgram("\"" + std::string(self) + "\" --no-skip -tc=\"child: ends inside a call\"").exitCode ==
        77);
}

TEST_CASE("child: ends inside a call" * doctest::skip()) {
  static LoadedDll dll(std::getenv("KELUTILS_TEST_DLL"));
  static std::function<void()> work = [] {
    for (;;) CALL(dll, KE_SetAgentID)("agent");
  };
  CloseHandle(StartThread(work));
  Sleep(200);
  ExitProcess(77);
}
