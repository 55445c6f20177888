// Every export against every bad argument, in the long form against every two of them, and against a damaged store: a
// documented result, nothing read or written outside of what was handed over, and the arguments taken off the stack,
// whatever its alignment.
#include <map>

#include "endurance/exported_functions.h"
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
  const auto count = [](const std::string& text, const std::string& part) {
    int found = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; ++at) ++found;
    return found;
  };
  std::string unpaired;  // inner functions with a start line and no end line, or the reverse
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
    for (std::size_t at = 0; (at = lines.find(";\"Function ", at)) != lines.npos; at += 2) {
      const std::size_t begin = lines.rfind(';', at - 1);
      const std::string inner = lines.substr(begin, at - begin), mark = inner + ";\"Function ";
      if (count(lines, mark + "start") != count(lines, mark + "end")) unpaired += function.name + inner + " ";
    }
    if (function.name == "KE_SetURLSecureServer") CHECK(lines.empty());
    if (function.name == "KE_SetURLSecureServer") continue;
    CHECK(lines.find(";10" + who + "Function start\"") != lines.npos);
    if (function.results.contains(1)) {  // yes or no
      CHECK(lines.find(";10" + who + "Function end. Return code (") != lines.npos);
      continue;
    }
    const bool wrong = result == 1777 || result == 1778 || result == 1789;
    CHECK(lines.find(";10" + who + "Function end. Return code (" + code + ")\"") != lines.npos);
    CHECK(count(lines, ";20" + who + "Wrong parameters\"") == (wrong ? 1 : 0));
    CHECK(count(lines, ";20" + who + "Error (" + code + ") return by function (" + name + ")\"") ==
          (result != 0 && !wrong ? 1 : 0));
  }
  CHECK(unpaired ==
        "KE_InitializeSystem;ReRegisterPluginsFromRegistry KE_InitializeSystemEx;ReRegisterPluginsFromRegistry ");
}
