// Calls and loads, over and over: what the process holds stays as it was.
#include <windows.h>

#include <tlhelp32.h>

#include "endurance/exported_functions.h"
#include "support/handles.h"
#include "support/tally.h"

namespace {

struct Holding {
  std::string name;
  long long amount;
  long long slack;  // how much more may be there after all the calls: less than one each
};

DWORD Threads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  DWORD count = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
    count += entry.th32OwnerProcessID == GetCurrentProcessId();
  }
  CloseHandle(snapshot);
  return count;
}

// How many slots of thread-local or fiber-local storage are free, negative.
long long UsedSlots(DWORD(WINAPI* take)(), BOOL(WINAPI* free)(DWORD)) {
  std::vector<DWORD> slots;
  for (DWORD slot; (slot = take()) != TLS_OUT_OF_INDEXES;) slots.push_back(slot);
  for (const DWORD slot : slots) free(slot);
  return -static_cast<long long>(slots.size());
}

DWORD WINAPI TakeFiberSlot() { return FlsAlloc(nullptr); }

// Committed memory that belongs to this process alone.
long long PrivateBytes() {
  long long bytes = 0;
  MEMORY_BASIC_INFORMATION region;
  const char* address = nullptr;
  while (VirtualQuery(address, &region, sizeof region) != 0) {
    if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += static_cast<long long>(region.RegionSize);
    address = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
    if (address == nullptr) break;
  }
  return bytes;
}

std::vector<Holding> Holdings() {
  return {{"handles", support::OpenHandles(), 0},         {"threads", Threads(), 0},
          {"TLS slots", UsedSlots(TlsAlloc, TlsFree), 0}, {"FLS slots", UsedSlots(TakeFiberSlot, FlsFree), 0},
          {"heap bytes", support::HeapBytes(), 400},      {"private bytes", PrivateBytes(), 1 << 20}};
}

// Runs `work` `warmUp` times and then `times` times, between which nothing may be left behind.
template <typename Work>
void Repeat(support::Tally& tally, const std::string& name, int warmUp, int times, Work work) {
  for (int i = 0; i < warmUp; ++i) work();
  const auto before = Holdings();
  for (int i = 0; i < times; ++i) work();
  const auto after = Holdings();
  for (std::size_t i = 0; i < before.size(); ++i) {
    const long long more = after[i].amount - before[i].amount;
    tally.Case(more <= before[i].slack,
               name + ", " + before[i].name + ": " + std::to_string(more) + " more after " + std::to_string(times));
  }
}

}  // namespace

TEST_CASE("leaks: loading, using and unloading, also with exceptions inside") {
  const endurance::BusyTree tree(true);
  const support::ProductTree large;
  support::WriteFile(large.Store("INTEGRA.DAT"), "");
  std::filesystem::resize_file(large.Store("INTEGRA.DAT"), 3LL << 30);  // more than there is memory for
  support::Tally tally("loading, using and unloading");
  const int times = support::IsLong() ? 10000 : 300;
  const auto cycle = [](const support::ProductTree& in, KE_RESULT expected) {
    const support::LoadedDll dll(in.Path("KELUtils/KELUtils.dll"));
    char buffer[64];
    CHECK(CALL(dll, KE_GetAgentID)(buffer, sizeof buffer) == expected);
  };
  Repeat(tally, "load", 20, times, [&] { cycle(tree, KE_SUCCESS); });
  Repeat(tally, "load, with an exception", 10, times / 3, [&] { cycle(large, KE_EXCEPTION); });
  CHECK(GetModuleHandleA("KELUtils.dll") == nullptr);
  tally.note = ", " + std::to_string(times) + " cycles";
}

TEST_CASE("leaks: calls of every export that does not wait") {
  const endurance::BusyTree tree(true);
  // Loading the trace log takes most of the time of a call, and is part of the short form and of the loads above.
  if (support::IsLong()) std::filesystem::remove(tree.Path("Common/TvLogSys.dll"));
  const support::LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
  support::Tally tally("calls of every export that does not wait");
  const int times = support::IsLong() ? 10000 : 50;
  for (const endurance::ExportedFunction& function : endurance::ExportedFunctions()) {
    if (endurance::Waits(function)) continue;
    tree.Reset();
    const auto values = tree.Values(function);
    const auto good = endurance::GoodValues(values);
    Repeat(tally, function.name, 10, times, [&] { endurance::Call(dll.Handle(), function, good, 0); });
  }
  tally.note = ", " + std::to_string(times) + " calls of each";
}

// A measurement, which lasts more than a minute: scripts/bench.sh runs it. The prompts answer at once.
TEST_CASE("memory: a process that has used every export" * doctest::skip()) {
  const long long atFirst = PrivateBytes();
  const endurance::BusyTree tree(true);
  support::WriteFile(tree.Path("KESAgent/KePIRes.ini"), "[AUTO]\r\nAnswer=0\r\n");
  const long long before = PrivateBytes();
  std::vector<std::vector<std::vector<endurance::Value>>> values;
  for (const auto& function : endurance::ExportedFunctions()) values.push_back(tree.Values(function));
  const long long ofArguments = PrivateBytes() - before;
  const support::LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
  std::printf("private bytes: %lld before the library was loaded for the first time\n", atFirst);
  long long more = -1;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const endurance::ExportedFunction& function = endurance::ExportedFunctions()[i];
    tree.Reset();
    const auto called = endurance::Call(dll.Handle(), function, endurance::GoodValues(values[i]), 0);
    CHECK_MESSAGE(function.results.count(called.result), function.name, " answered ", called.result);
    const long long now = PrivateBytes() - atFirst - ofArguments;
    if (now != more) std::printf("  %lld more from %s on\n", more = now, function.name.c_str());
  }
  std::printf("private bytes: %lld more after each of %u exports was used\n", more,
              static_cast<unsigned>(values.size()));
}
