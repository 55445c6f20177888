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
