// Every export while a call that it makes fails: an allocation or a call of Windows, each in turn, once or from then
// on. The results and outputs are those of the contract, files are old or new, nothing leaks, and the next call works.
#include <windows.h>
// After windows.h.
#include <objbase.h>
#include <psapi.h>

#include <climits>
#include <deque>
#include <span>

#include "endurance/exported_functions.h"
#include "support/handles.h"
#include "torture/torture.h"
#include "win/random_number.h"

namespace {

using namespace std::string_literals;

using endurance::ExportedFunction;
using endurance::Value;
using torture::Gate;
using win::Call;

/// The calls that fail, and the error that they leave.
struct Failing {
  const char* name;
  Call first, last;
  DWORD error;
};

constexpr Failing kMemory[] = {{"allocation", Call::kMemory, Call::kMemory, ERROR_NOT_ENOUGH_MEMORY}};

constexpr Failing kWindows[] = {{"file call", Call::kStatus, Call::kLock, ERROR_ACCESS_DENIED},
                                {"registry call", Call::kRegistry, Call::kRegistry, ERROR_ACCESS_DENIED},
                                {"profile call", Call::kProfile, Call::kProfile, ERROR_WRITE_PROTECT},
                                {"load of a module", Call::kModule, Call::kModule, ERROR_MOD_NOT_FOUND},
                                {"look-up of a function", Call::kFunction, Call::kFunction, ERROR_PROC_NOT_FOUND},
                                {"start of a program", Call::kStart, Call::kStart, ERROR_NOT_ENOUGH_MEMORY},
                                {"wait or event", Call::kWait, Call::kEvent, ERROR_INVALID_HANDLE},
                                {"name", Call::kName, Call::kName, ERROR_GEN_FAILURE}};

// What a call may not leave behind.
struct Holds {
  long long modules = Modules(), heapBytes = support::HeapBytes();

  bool operator<=(const Holds& other) const { return modules <= other.modules && heapBytes <= other.heapBytes; }

 private:
  static long long Modules() {
    HMODULE modules[1024];
    DWORD size = 0;
    EnumProcessModules(GetCurrentProcess(), modules, sizeof modules, &size);
    return size / sizeof(HMODULE);
  }
};

// One export with good arguments.
struct Subject {
  const ExportedFunction& function;
  std::vector<const Value*> values;

  struct Outcome {
    endurance::Called called;
    std::vector<std::string> outputs;  // the memory of the arguments after the call

    bool operator==(const Outcome& other) const {
      return called.result == other.called.result && outputs == other.outputs;
    }
  };

  Outcome Call(void (*inside)(bool) = [](bool) {}) const {
    Outcome outcome{endurance::Call(GetModuleHandleA(nullptr), function, values, 0, inside), {}};
    for (const Value* value : values) {
      for (const endurance::Fill& fill : value->fills) outcome.outputs.emplace_back(fill.at, fill.content.size());
    }
    return outcome;
  }

  Outcome CallFromThread() const {
    struct Context {
      const Subject& subject;
      Outcome outcome;
    } context{*this, {}};
    const auto call = [](void* of) -> DWORD WINAPI {
      auto& [subject, outcome] = *static_cast<Context*>(of);
      outcome = subject.Call();
      return 0;
    };
    const HANDLE thread = CreateThread(nullptr, 0, call, &context, 0, nullptr);
    REQUIRE_MESSAGE(WaitForSingleObject(thread, 60000) == WAIT_OBJECT_0, function.name);
    CloseHandle(thread);
    return context.outcome;
  }

  // What is wrong with the outcome of a call inside of which something failed; `good` is that of one without.
  std::string Judge(const Outcome& failed, const Outcome& good) const {
    static const std::set<std::string> clearsFirst = {"KE_IsInstallComplete", "KE_CanRunCommand",
                                                      "KE_GetCanReboot",      "KE_GetCanRebootEx",
                                                      "KE_GetUserResponse",   "KE_ScheduleTaskReboot"};
    const bool kept =
        failed.called.untouched || (clearsFirst.contains(function.name) && failed.outputs[0].ends_with("\0\0\0\0"s));
    // A profile call that fails reads the empty text.
    const bool emptied = function.name == "KE_GetUpdateNowConfig" && failed.outputs[0].substr(16, 1) == "\0"s;
    const bool asGood = failed.called.result == good.called.result && failed.outputs == good.outputs;
    return std::string(function.MayReturn(failed.called.result) ? "" : " undocumented") +
           (failed.called.inBounds ? "" : " out of bounds") + (asGood || kept || emptied ? "" : " output");
  }
};

// All exports in one tree.
class Exports {
 public:
  Exports(bool siblings, const char* test) : tree_(siblings), tally_(test) {
    if (siblings) support::WriteFile(tree_.Path("KESAgent/KePIRes.ini"), "[AUTO]\r\nAnswer=0\r\n");
    tally_.note = siblings ? ", with siblings" : ", without siblings";
    win::g_randomNumber = [] { return 0; };
    win::g_waiting.pause = [](DWORD) {};
    for (const ExportedFunction& function : endurance::ExportedFunctions()) {
      values_.push_back(tree_.Values(function));
      subjects_.push_back({function, endurance::GoodValues(values_.back())});
      good_.emplace_back(*this, subjects_.back());
    }
  }

  // Fails the calls of each export, one after the other: all of some exports and of the long form; of the others the
  // first ones, from each on.
  void Run(std::span<const Failing> kinds, int first) {
    static const std::set<std::string> thorough = {"KE_SetPropertyInIntegra", "KE_SetEncryptedFileValue",
                                                   "KE_GetInetConfig"};
    const auto pass = [&](std::size_t i) {
      const bool all = support::IsLong() || thorough.contains(subjects_[i].function.name);
      for (const Failing& failing : kinds) {
        for (const Gate::Act act : {Gate::kFailOnce, Gate::kFailFromThenOn}) {
          const int last = all ? 100000 : act == Gate::kFailFromThenOn ? first : 0;
          for (int at = 1; at <= last && RunOnce(i, failing, act, at); ++at) continue;
        }
      }
    };
    const DWORD handles = support::OpenHandles();
    for (std::size_t i = 0; i < subjects_.size(); ++i) {
      // What one pass keeps, such as a larger table, is no leak unless each keeps more.
      bool grows = true;
      for (int passes = 0; grows && passes < 5; ++passes) {
        const Holds before;
        pass(i);
        grows = !(Holds() <= before);
      }
      CHECK_MESSAGE(!grows, subjects_[i].function.name, " leaves memory or a module behind");
    }
    CHECK(support::OpenHandles() <= handles);
  }

 private:
  // What a call makes of the files and of its outputs, and another setter after it of the store.
  struct Good {
    Good(const Exports& exports, const Subject& subject) {
      exports.Prepare();
      before = exports.Files();
      outcome = subject.Call();
      after = exports.Files();
      probedAfter = exports.Probe();
      exports.Prepare();
      probedBefore = exports.Probe();
    }
    Subject::Outcome outcome;
    std::vector<std::string> before, after;
    std::string probedBefore, probedAfter;
  };

  // False when the export makes fewer than `at` calls.
  bool RunOnce(std::size_t i, const Failing& failing, Gate::Act act, int at) {
    const Subject& subject = subjects_[i];
    const Good& good = good_[i];
    const std::string what = subject.function.name + ", " + failing.name + " " + std::to_string(at) +
                             (act == Gate::kFailOnce ? "" : " and on");
    CAPTURE(what);
    Prepare();
    Subject::Outcome failed;
    bool reached = false;
    {
      const Gate gate(act, at, failing.error, false, failing.first, failing.last);
      Gate::Arm(false);
      failed = subject.Call(Gate::Arm);
      reached = Gate::Reached();
    }
    std::string wrong = reached                  ? subject.Judge(failed, good.outcome)
                        : failed == good.outcome ? ""
                                                 : " not as without a failure";
    const auto files = Files();
    for (std::size_t file = 0; file < files.size(); ++file) {
      // A value file that was not encrypted for want of memory is left empty, which is a success.
      const bool emptied = file == 3 && files[file].empty() && failed.called.result == KE_SUCCESS;
      if (files[file] != good.before[file] && files[file] != good.after[file] && !emptied)
        wrong += " file " + std::to_string(file);
    }
    if (good.before[0] != good.after[0]) {
      const std::string probed = Probe();
      if (probed != good.probedBefore && probed != good.probedAfter) wrong += " cached store";
    }
    // From another thread, which a lock that is still held would stop.
    const Subject::Outcome next = subject.CallFromThread();
    if (next != good.outcome) wrong += " next " + std::to_string(next.called.result);
    if (CoInitializeEx(nullptr, COINIT_MULTITHREADED) != S_OK) wrong += " COM";
    CoUninitialize();
    tally_.Case(wrong.empty(), what + ": " + std::to_string(failed.called.result) + wrong);
    return reached;
  }

  void Prepare() const {
    tree_.Reset();
    support::WriteFile(tree_.Path("values.dat"), "[5]\r\n5=5\r\n");
    store::DropIntegraStore();
  }

  std::vector<std::string> Files() const {
    std::vector<std::string> contents;
    for (const char* file : {"KESAgent/INTEGRA.DAT", "KESAgent/INTEGRA.BAK", "KESAgent/INTEGRA.START", "values.dat"})
      contents.push_back(support::ReadFile(tree_.Path(file)));
    return contents;
  }

  std::string Probe() const { return KE_SetServerDate("probe"), Files()[0]; }

  endurance::BusyTree tree_;
  const support::InnerModule module_{tree_};
  support::Tally tally_;
  std::deque<std::vector<std::vector<Value>>> values_;
  std::vector<Subject> subjects_;
  std::vector<Good> good_;
};

void FailEach(const char* test, std::span<const Failing> kinds, int first) {
  if (support::IsLong()) Exports(false, test).Run(kinds, first);
  Exports(true, test).Run(kinds, first);
}

}  // namespace

TEST_CASE("every allocation may fail: documented results, files old or new, no leak, and the next call works") {
  FailEach("every allocation fails", kMemory, 3);
}

TEST_CASE("every call of Windows may fail: documented results, files old or new, no leak, and the next call works") {
  FailEach("every call of Windows fails", kWindows, 1);
}

TEST_CASE("an allocation that fails in a row of the jobs costs the commands of that row alone") {
  static int s_memory, s_starts, s_failing;
  const endurance::BusyTree tree(false);
  const support::InnerModule module(tree);
  const auto starts = [&](int failing) {
    tree.Reset();
    store::DropIntegraStore();
    s_memory = s_starts = 0, s_failing = failing;
    win::g_gate = [](Call call, unsigned long&) {
      s_starts += call == Call::kStart;
      return call != Call::kMemory || ++s_memory != s_failing;
    };
    KE_ScheduleDefaultTasks();
    win::g_gate = nullptr;
    return s_starts;
  };
  const int all = starts(0), allocations = s_memory;
  // Adding and editing a job, each in two places.
  for (int at = 1; at <= allocations; at += support::IsLong() ? 1 : 19) CHECK_MESSAGE(starts(at) >= all - 4, at);
}

TEST_CASE("siblings that misbehave: any code, records full to their end, calls back into an export") {
  const endurance::BusyTree tree(true);
  const support::InnerModule module(tree);
  support::WriteFile(tree.Path("KESAgent/KePIRes.ini"), "[AUTO]\r\nAnswer=0\r\n");
  win::g_waiting.pause = [](DWORD) {};
  const support::LoadedDll siblings[] = {support::LoadedDll(tree.Path("Common/KELAGAPI.dll")),
                                         support::LoadedDll(tree.Path("Common/KELMNAPI.dll")),
                                         support::LoadedDll(tree.Path("KELTVEVT/TvEvAPI.dll"))};
  support::Tally tally("siblings misbehave");
  for (const int answer : {0, 1, -1, INT_MIN, 1559}) {
    for (const support::LoadedDll& sibling : siblings) {
      *CALL(sibling, FakeMischief)() = {true, answer, [] {
                                          char id[64];
                                          KE_GetAgentID(id, sizeof id);
                                        }};
    }
    for (const ExportedFunction& function : endurance::ExportedFunctions()) {
      tree.Reset();
      const auto values = tree.Values(function);
      const auto called = endurance::Call(GetModuleHandleA(nullptr), function, endurance::GoodValues(values), 0);
      tally.Case(function.MayReturn(called.result) && called.inBounds,
                 function.name + " with " + std::to_string(answer) + ": " + std::to_string(called.result));
    }
  }
}
