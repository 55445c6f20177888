// Many processes and threads at work on one store.
#include <windows.h>

#include <atomic>
#include <memory>
#include <vector>

#include "store/accessors.h"
#include "support/inner_module.h"
#include "torture/torture.h"

using torture::Child;
using torture::Value;

namespace {

constexpr int kProcesses = 4, kThreads = 4, kLast = 1000000;

int Operations() { return support::IsLong() ? 2000 : 30; }

std::string Key(int process, int thread) { return "K" + std::to_string(process) + "_" + std::to_string(thread); }

std::atomic<int> g_refused = 0, g_torn = 0, g_lost = 0;
std::atomic<DWORD> g_longest = 0;  // milliseconds of one operation

std::string Current(const std::string& key) {
  std::string value;
  const KE_RESULT result = store::ReadStore([&](const store::IniStore& store) -> KE_RESULT {
    value = store::FindValue(store, "INTEGRATION", key.c_str()).value_or("");
    return KE_SUCCESS;
  });
  g_refused += result != KE_SUCCESS;
  return value;
}

struct Worker {
  int process, thread;

  void Run() const {
    const std::string mine = Key(process, thread);
    unsigned chance = static_cast<unsigned>(process * 100 + thread + 1);
    int n = 0;
    for (int i = 0; i < Operations(); ++i) {
      chance = chance * 1103515245 + 12345;
      const unsigned what = chance >> 16;
      const DWORD begin = GetTickCount();
      if (what % 8 == 0) {
        g_refused += store::RestoreIntegraDat().Code() != KE_SUCCESS;
      } else if (what % 2 == 0) {
        const std::string other = Key(static_cast<int>(what / 8 % kProcesses), static_cast<int>(what / 64 % kThreads));
        const std::string value = Current(other);
        g_torn += value != Value(other, std::atoi(value.c_str()));
      } else {
        g_lost += Current(mine) != Value(mine, n);  // nobody else sets it
        g_refused += KE_SetPropertyInIntegra(mine.c_str(), Value(mine, ++n).c_str()) != KE_SUCCESS;
      }
      g_longest = std::max(g_longest.load(), GetTickCount() - begin);
    }
    g_refused += KE_SetPropertyInIntegra(mine.c_str(), Value(mine, kLast).c_str()) != KE_SUCCESS;
  }
};

DWORD WINAPI RunWorker(void* worker) {
  static_cast<const Worker*>(worker)->Run();
  return 0;
}

std::atomic<bool> g_getting;
DWORD g_longestGetter;  // milliseconds

DWORD WINAPI GetMeanwhile(void*) {
  while (g_getting) {
    const DWORD begin = GetTickCount();
    torture::GetAny();
    g_longestGetter = std::max(g_longestGetter, GetTickCount() - begin);
    Sleep(10);
  }
  return 0;
}

}  // namespace

TEST_CASE("many at once: processes and threads get, set and restore; no value is torn, and none is lost") {
  support::Tally tally("many at once");
  const StoreTree tree;
  // With a backup from the start: who restores before the first change finds one.
  for (const char* file : {"INTEGRA.DAT", "INTEGRA.BAK"}) tree.Put(file, WholeStore("crowd"));
  std::vector<std::unique_ptr<Child>> children;
  for (int i = 0; i < kProcesses; ++i) {
    children.push_back(std::make_unique<Child>("child: one of a crowd", tree.tree, i));
  }
  for (const auto& child : children) tally.Case(child->End(600000) == 0, "a process of the crowd");
  const std::string text = tree.Text("INTEGRA.DAT");
  for (int i = 0; i < kProcesses * kThreads; ++i) {
    const std::string key = Key(i / kThreads, i % kThreads);
    tally.Case(text.find(key + "=" + Value(key, kLast) + "\r\n") != std::string::npos, "the last value of " + key);
  }
  CHECK(tree.Text("INTEGRA.BAK") == text);
  tally.note = " (4 processes of 4 threads, " + std::to_string(Operations()) + " operations each)";
}

TEST_CASE("child: one of a crowd" * doctest::skip()) {
  const torture::ToldModule module;
  Worker workers[kThreads];
  HANDLE threads[kThreads];
  for (int i = 0; i < kThreads; ++i) {
    workers[i] = {module.first, i};
    threads[i] = CreateThread(nullptr, 0, RunWorker, &workers[i], 0, nullptr);
  }
  CHECK(WaitForMultipleObjects(kThreads, threads, TRUE, 600000) == WAIT_OBJECT_0);
  for (const HANDLE thread : threads) CloseHandle(thread);
  std::printf("torture:   process %d: longest operation %lu ms\n", module.first, g_longest.load());
  CHECK((g_refused == 0 && g_torn == 0 && g_lost == 0));
}

TEST_CASE("a process that hangs inside a write holds up the others once, for five seconds, and getters not at all") {
  const StoreTree tree;
  torture::Prepare(tree, torture::Scenes()[0]);
  const Child child("child: hangs inside a write", tree.tree);
  for (int i = 0; i < 1000 && !std::filesystem::exists(tree.tree.Path("hung")); ++i) Sleep(10);
  REQUIRE(std::filesystem::exists(tree.tree.Path("hung")));

  const support::InnerModule module(tree.tree);
  g_getting = true, g_longestGetter = 0;
  const HANDLE getter = CreateThread(nullptr, 0, GetMeanwhile, nullptr, 0, nullptr);
  for (const auto& [least, most] : {std::pair<DWORD, DWORD>{4500, 8000}, {0, 2500}}) {  // the first and the next
    const DWORD begin = GetTickCount();
    CHECK(torture::SetNew() == KE_SUCCESS);
    const DWORD waited = GetTickCount() - begin;
    CHECK((waited >= least && waited < most));
  }
  g_getting = false;
  CHECK(WaitForSingleObject(getter, 10000) == WAIT_OBJECT_0);
  CloseHandle(getter);
  CHECK((g_longestGetter < 2500 && AgentId(tree.Load()) == torture::kNew));
}

TEST_CASE("child: hangs inside a write" * doctest::skip()) {
  static const torture::ToldModule module;
  win::g_gate = [](win::Call call, unsigned long&) {
    if (call == win::Call::kWrite) {
      support::WriteFile(module.Path("hung"), "");
      Sleep(INFINITE);
    }
    return true;
  };
  torture::SetNew();
}

TEST_CASE("the lock of the store: what is in its place is traced, and the value is set") {
  const support::AgentTree tree;
  tree.AddFake("FakeApiCr", "KELUtils/ApiCr.dll");
  support::WriteFile(tree.Store("INTEGRA.DAT"), WholeStore("old"));
  const std::string lock = tree.Store("INTEGRA.LCK").string();
  CHECK(torture::SetNew() == KE_SUCCESS);
  REQUIRE(std::filesystem::remove(lock));
  std::filesystem::create_directory(lock);
  CHECK(torture::SetNew() == KE_SUCCESS);
  CHECK(tree.Traced("StoreLock;\"The lock of the store cannot be used [File = " + tree.Path("KELUtils").string() +
                    "\\..\\KESAgent\\INTEGRA.LCK] - Error 5\""));
}
