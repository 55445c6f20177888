// The process that changes the store is ended: at every file call in turn, and at moments of chance. Whoever comes next
// finds the old identity or the new one.
#include <windows.h>

#include "torture/torture.h"

using torture::Child;
using torture::Gate;

TEST_CASE("killed at every file call: the old identity or the new one, and no copy is ever half a file") {
  for (std::size_t i = 0; i < (support::IsLong() ? torture::Scenes().size() : 2); ++i) {
    const torture::Scene& scene = torture::Scenes()[i];
    support::Tally tally(scene.name);
    const StoreTree tree;
    DWORD code = Gate::kEnded;
    for (int at = 1; code == Gate::kEnded && at < 200; ++at) {
      torture::Prepare(tree, scene);
      code = Child("child: killed at a file call", tree.tree, static_cast<int>(i), at).End();
      const bool whole = torture::CopiesAreWhole(tree, scene);
      const std::string id = torture::FreshIdentity(tree);
      tally.Case(whole && scene.Allows(id), "killed at call " + std::to_string(at) + ": " + id.substr(0, 20));
      if (code == 0) CHECK(id.substr(0, 20) == scene.after.substr(0, 20));
    }
    CHECK(code == 0);  // in the end a child runs through
    tally.note = " (each file call of the scene)";
  }
}

TEST_CASE("child: killed at a file call" * doctest::skip()) {
  const torture::ToldModule module;
  const Gate gate(Gate::kEndProcess, module.second);
  REQUIRE(torture::Scenes()[static_cast<size_t>(module.first)].call() == KE_SUCCESS);
}

namespace {

std::string Identity(int n) { return torture::Value("-", n); }

DWORD WINAPI EndAfter(void* microseconds) {
  const auto duration = static_cast<LONGLONG>(reinterpret_cast<ULONG_PTR>(microseconds));
  Sleep(static_cast<DWORD>(duration / 1000));
  LARGE_INTEGER frequency, begin, now;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&begin);
  do {  // the rest of a millisecond
    QueryPerformanceCounter(&now);
  } while ((now.QuadPart - begin.QuadPart) * 1000000 < duration % 1000 * frequency.QuadPart);
  TerminateProcess(GetCurrentProcess(), Gate::kEnded);
  return 0;
}

}  // namespace

TEST_CASE("killed at moments of chance: each process finds a whole identity, never an older one") {
  support::Tally tally("killed at moments of chance");
  const support::ProductTree tree;
  support::WriteFile(tree.Store("INTEGRA.DAT"), WholeStore(Identity(1)));
  unsigned chance = 12345;
  int reached = 1;
  for (int i = 0; i < (support::IsLong() ? 1000 : 10); ++i) {
    chance = chance * 1103515245 + 12345;
    const Child child("child: sets until it is killed", tree, reached, static_cast<int>(chance >> 8) % 40000);
    tally.Case(child.End() == Gate::kEnded, "run " + std::to_string(i));
    reached = std::atoi(support::ReadFile(tree.Path("reached")).c_str());
  }
  CHECK(reached > 1);
  tally.note = ", " + std::to_string(reached) + " identities set";
}

TEST_CASE("child: sets until it is killed" * doctest::skip()) {
  static const torture::ToldModule module;
  static char id[8192];
  REQUIRE(KE_GetAgentID(id, sizeof id) == KE_SUCCESS);
  int n = std::atoi(id);
  REQUIRE(n >= module.first);
  REQUIRE(id == Identity(n));
  support::WriteFile(module.Path("reached"), std::to_string(n));
  CloseHandle(CreateThread(nullptr, 0, EndAfter, reinterpret_cast<void*>(module.second), 0, nullptr));
  for (;;) REQUIRE(KE_SetAgentID(Identity(++n).c_str()) == KE_SUCCESS);
}
