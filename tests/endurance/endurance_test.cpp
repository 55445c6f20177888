// Every export against every bad argument, in the long form against every two of them, and against a damaged store: a
// documented result, nothing read or written outside of what was handed over, and the arguments taken off the stack,
// whatever its alignment. Calls and loads, over and over: what the process holds stays as it was.
#include <windows.h>

#include <tlhelp32.h>

#include <map>

#include "endurance/exported_functions.h"
#include "support/handles.h"
#include "support/tally.h"
#include "win/owner.h"

using namespace endurance;

namespace {

// Names the call in which memory was touched that must not be.
struct Witness {
  static LONG CALLBACK Tell(EXCEPTION_POINTERS* what) {
    if (what->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION)
      std::printf("access violation: %s\n", call.c_str());
    return EXCEPTION_CONTINUE_SEARCH;
  }
  ~Witness() { RemoveVectoredExceptionHandler(handler); }
  void* const handler = AddVectoredExceptionHandler(1, Tell);
  static inline std::string call;
};

struct Matrix {
  explicit Matrix(bool siblings)
      : tree(siblings), tally(siblings ? "bad arguments, with siblings" : "bad arguments, without siblings") {}

  void Try(const ExportedFunction& function, const std::vector<const Value*>& values) {
    Witness::call = function.name + "(";
    for (const Value* value : values) Witness::call += (value == values[0] ? "" : "; ") + value->shown;
    const Called called = Call(dll.Handle(), function, values, calls++ % 4 * 4);
    succeeded += called.result == KE_SUCCESS;
    tally.Case(function.MayReturn(called.result) && called.inBounds &&
                   called.popped == 4 * function.parameters.size() &&
                   (called.result != KE_BUFFER_TOO_SMALL || called.untouched || function.name == "KE_EncryptSetting"),
               Witness::call + ") = " + std::to_string(called.result) + (called.inBounds ? "" : ", out of bounds") +
                   (called.untouched ? "" : ", written") + ", stack " + std::to_string(called.popped));
  }

  // One bad argument at a time, all of them at once, and in the long form every two.
  void Run(const ExportedFunction& function) {
    tree.Reset();
    succeeded = 0;
    const auto values = tree.Values(function);
    const std::vector<const Value*> good = GoodValues(values);
    Try(function, good);
    for (std::size_t i = 0; i < values.size(); ++i) {
      for (const Value& bad : values[i]) {
        std::vector<const Value*> arguments = good;
        arguments[i] = &bad;
        Try(function, arguments);
        for (std::size_t j = i + 1; j < values.size() && support::IsLong(); ++j) {
          for (const Value& other : values[j]) {
            arguments[j] = &other;
            Try(function, arguments);
          }
          arguments[j] = good[j];
        }
      }
    }
    for (std::size_t k = 1; k < 6; ++k) {
      std::vector<const Value*> all;
      for (const auto& value : values) all.push_back(&value[std::min(k, value.size() - 1)]);
      Try(function, all);
    }
    if (succeeded == 0) failing += function.name + " ";
  }

  BusyTree tree;
  const support::LoadedDll dll{tree.Path("KELUtils/KELUtils.dll")};
  // The trace log, if there is one, stays loaded, which saves most of the time.
  const win::ModuleHandle log{LoadLibraryW(tree.Path("Common/TvLogSys.dll").c_str())};
  const Witness witness;
  support::Tally tally;
  int calls = 0, succeeded = 0;
  std::string failing;  // the exports that never succeeded
};

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

// Bytes in use in all heaps of the process.
long long HeapBytes() {
  HANDLE heaps[64];
  long long bytes = 0;
  const DWORD count = std::min<DWORD>(GetProcessHeaps(64, heaps), 64);
  for (DWORD i = 0; i < count; ++i) {
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heaps[i]);
    while (HeapWalk(heaps[i], &entry)) bytes += entry.wFlags & PROCESS_HEAP_ENTRY_BUSY ? entry.cbData : 0;
    HeapUnlock(heaps[i]);
  }
  return bytes;
}

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
  return {{"handles", support::OpenHandles(), 0},
          {"threads", Threads(), 0},
          {"TLS slots", UsedSlots(TlsAlloc, TlsFree), 0},
          {"FLS slots", UsedSlots(TakeFiberSlot, FlsFree), 0},
          {"heap bytes", HeapBytes(), 400},
          {"private bytes", PrivateBytes(), 1 << 20}};
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

TEST_CASE("bad arguments: a documented result, and nothing beyond the arguments is touched") {
  CHECK(ExportedFunctions().size() == 87);
  Matrix with(true);
  for (const ExportedFunction& function : ExportedFunctions()) {
    if (!Waits(function)) with.Run(function);
  }
  // All but those that miss their programs have succeeded, so that arguments went all the way; one of them answers 1.
  CHECK(with.failing ==
        "KE_IsNeededInstallationPassw KE_LaunchKEPWInst KE_SetTask KE_SetPeriodicTask KE_SetPeriodicTaskEx "
        "KE_SetPeriodicTaskRangeDate KE_ScheduleTaskReboot KE_ScheduleDefaultTasks KE_UpgradeComplete "
        "KE_ScheduleUpgradeComplete ");
}

TEST_CASE("bad arguments: the same without siblings") {
  Matrix without(false);
  for (const ExportedFunction& function : ExportedFunctions()) without.Run(function);
}

TEST_CASE("damage: the store cut at every length, and every bit flipped") {
  const BusyTree tree(false);
  support::Tally tally("INTEGRA.DAT cut and flipped");
  std::vector<const ExportedFunction*> getters, setters;
  for (const ExportedFunction& function : ExportedFunctions()) {
    const std::string& name = function.name;
    if (name.find("EncryptedFile") != name.npos || name.find("Upgrade") != name.npos) continue;
    if (!function.results.contains(KE_CRYPTO_FAILED) && name.find("InstallationPassw") == name.npos) continue;
    const bool changes = name.starts_with("KE_Set") || name.ends_with("ntegrate");
    (changes && name != "KE_IsIntegrated" ? setters : getters).push_back(&function);
  }
  CHECK(getters.size() + setters.size() >= 35);
  std::size_t count = 0;
  const auto load = [&] { return support::LoadedDll(tree.Path("KELUtils/KELUtils.dll")); };
  const auto run = [&](const std::string& content, const std::string& damage) {
    const auto call = [&](const support::LoadedDll& dll, const ExportedFunction& function) {
      const auto called = Call(dll.Handle(), function, GoodValues(tree.Values(function)), 0);
      tally.Case(function.MayReturn(called.result) && called.inBounds,
                 damage + ", " + function.name + ": " + std::to_string(called.result));
      return called.result;
    };
    std::filesystem::remove(tree.Store("INTEGRA.BAK"));
    support::WriteFile(tree.Store("INTEGRA.DAT"), content);
    for (const support::LoadedDll dll = load(); const ExportedFunction* getter : getters) call(dll, *getter);
    // A setter in a new instance, a different one each time, with a file that nobody has repaired.
    support::WriteFile(tree.Store("INTEGRA.DAT"), content);
    const ExportedFunction& setter = *setters[count++ % setters.size()];
    const bool setsId = call(load(), setter) == KE_SUCCESS && setter.name == "KE_SetAgentID";
    const std::string id = AgentId(load());
    tally.Case(!setsId || id == "5", damage + ", then " + id);
  };
  const std::string whole = tree.content;
  const std::size_t step = support::IsLong() ? 1 : 101;
  for (std::size_t length = 0; length < whole.size(); length += step)
    run(whole.substr(0, length), "cut at " + std::to_string(length));
  for (std::size_t bit = 0; bit < 8 * whole.size(); bit += bit < 64 ? std::min<std::size_t>(step, 5) : step) {
    std::string flipped = whole;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ 1 << bit % 8);
    run(flipped, "bit " + std::to_string(bit));
  }
  tally.note = ", a store of " + std::to_string(whole.size()) + " bytes, " + std::to_string(count) + " damages";
}

TEST_CASE("tracing: every export writes its start and end under its name, and between them one line for a failure") {
  const std::map<std::string, std::string> names = {{"KE_GetLastErrorParam", "KE_GetLastInstallErrorEx"},
                                                    {"KE_GetPasswordRCMDec", "KE_GetPasswordRCM"},
                                                    {"KE_AddPlugin", "KE_UTIL_AddPlugin"},
                                                    {"KE_SetVersion", "KE_UTIL_SetVersion"},
                                                    {"KE_GetInetConfig", "KE_INSTALL_GetInetConfig"},
                                                    {"KE_AplyLocalRCMCfg", "KE_AplyLocalCfg"},
                                                    {"KE_LaunchKEPWInst", "LaunchKEPWinst"}};
  const BusyTree tree(false);
  tree.TurnLogOn();
  const support::LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
  for (const ExportedFunction& function : ExportedFunctions()) {
    CAPTURE(function.name);
    const auto values = tree.Values(function);
    std::vector<const Value*> nothing;
    for (const auto& value : values) nothing.push_back(&value[1]);
    tree.Reset();
    std::filesystem::remove(tree.Path("KELUtils/KELUtils.log"));
    const std::uint32_t result = Call(dll.Handle(), function, nothing, 0).result;
    const auto named = names.find(function.name);
    const std::string name = named == names.end() ? function.name : named->second, lines = tree.Log(),
                      who = ";KELUtils;" + name + ";\"", code = std::to_string(result);
    if (function.name == "KE_SetURLSecureServer") CHECK(lines.empty());
    if (function.name == "KE_SetURLSecureServer") continue;
    CHECK(lines.find(";10" + who + "Function start\"") != lines.npos);
    if (function.results.contains(1)) {  // yes or no
      CHECK(lines.find(";10" + who + "Function end. Return code (") != lines.npos);
      continue;
    }
    const std::string begin = ";20" + who, error = "Error (" + code + ") return by function (" + name + ")\"",
                      line = result == 1777 || result == 1778 || result == 1789 ? "Wrong parameters\"" : error;
    const std::size_t first = lines.find(begin + line);
    CHECK((first == lines.npos) == (result == 0));
    CHECK((first == lines.npos || lines.find(begin + line, first + 1) == lines.npos));
    CHECK((lines.find(begin + error) != lines.npos) == (result != 0 && line == error));
    CHECK(lines.find(";10" + who + "Function end. Return code (" + code + ")\"") != lines.npos);
  }
}

TEST_CASE("leaks: loading, using and unloading, also with exceptions inside") {
  const BusyTree tree(true);
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
  const BusyTree tree(true);
  // Loading the trace log takes most of the time of a call, and is part of the short form and of the loads above.
  if (support::IsLong()) std::filesystem::remove(tree.Path("Common/TvLogSys.dll"));
  const support::LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
  support::Tally tally("calls of every export that does not wait");
  const int times = support::IsLong() ? 10000 : 50;
  for (const ExportedFunction& function : ExportedFunctions()) {
    if (Waits(function)) continue;
    tree.Reset();
    const auto values = tree.Values(function);
    const auto good = GoodValues(values);
    Repeat(tally, function.name, 10, times, [&] { Call(dll.Handle(), function, good, 0); });
  }
  tally.note = ", " + std::to_string(times) + " calls of each";
}

// A measurement, which lasts more than a minute: scripts/bench.sh runs it. The prompts answer at once.
TEST_CASE("memory: a process that has used every export" * doctest::skip()) {
  const long long atFirst = PrivateBytes();
  const BusyTree tree(true);
  support::WriteFile(tree.Path("KESAgent/KePIRes.ini"), "[AUTO]\r\nAnswer=0\r\n");
  const long long before = PrivateBytes();
  std::vector<std::vector<std::vector<Value>>> values;
  for (const auto& function : ExportedFunctions()) values.push_back(tree.Values(function));
  const long long ofArguments = PrivateBytes() - before;
  const support::LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
  std::printf("private bytes: %lld before the library was loaded for the first time\n", atFirst);
  long long more = -1;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const ExportedFunction& function = ExportedFunctions()[i];
    tree.Reset();
    const auto called = Call(dll.Handle(), function, GoodValues(values[i]), 0);
    CHECK_MESSAGE(function.results.count(called.result), function.name, " answered ", called.result);
    const long long now = PrivateBytes() - atFirst - ofArguments;
    if (now != more) std::printf("  %lld more from %s on\n", more = now, function.name.c_str());
  }
  std::printf("private bytes: %lld more after each of %u exports was used\n", more,
              static_cast<unsigned>(values.size()));
}
