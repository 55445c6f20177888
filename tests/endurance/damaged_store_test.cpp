// INTEGRA.DAT cut at every length and with every bit flipped (in the short form some of them), before every export that
// reads it: a documented result each time, and a setter that succeeds leaves a store that holds the value.
#include "endurance/exported_functions.h"
#include "support/tally.h"

namespace {

using endurance::ExportedFunction;

struct Damage {
  endurance::BusyTree tree{false};
  support::Tally tally{"INTEGRA.DAT cut and flipped"};
  std::vector<const ExportedFunction*> getters, setters;
  int count = 0;

  Damage() {
    std::filesystem::remove(tree.Store("INTEGRA.BAK"));
    for (const ExportedFunction& function : endurance::ExportedFunctions()) {
      const std::string& name = function.name;
      if (name.find("EncryptedFile") != name.npos || name.find("Upgrade") != name.npos) continue;
      if (!function.results.contains(KE_CRYPTO_FAILED) && name.find("InstallationPassw") == name.npos) continue;
      const bool changes = name.starts_with("KE_Set") || name.ends_with("ntegrate");
      (changes && name != "KE_IsIntegrated" ? setters : getters).push_back(&function);
    }
  }

  std::uint32_t Try(const support::LoadedDll& dll, const ExportedFunction& function, const std::string& what) {
    const auto values = tree.Values(function);
    const endurance::Called called = endurance::Call(dll.Handle(), function, endurance::GoodValues(values), 0);
    tally.Case(function.MayReturn(called.result) && called.inBounds,
               what + ", " + function.name + ": " + std::to_string(called.result));
    return called.result;
  }

  void Run(const std::string& content, const std::string& what) {
    {
      support::WriteFile(tree.Store("INTEGRA.DAT"), content);
      const support::LoadedDll dll(tree.Path("KELUtils/KELUtils.dll"));
      for (const ExportedFunction* getter : getters) Try(dll, *getter, what);
    }
    // A setter in a new instance, a different one each time, with a file that nobody has repaired.
    support::WriteFile(tree.Store("INTEGRA.DAT"), content);
    const ExportedFunction& setter = *setters[static_cast<std::size_t>(count++) % setters.size()];
    const std::uint32_t result = Try(support::LoadedDll(tree.Path("KELUtils/KELUtils.dll")), setter, what);
    const support::LoadedDll next(tree.Path("KELUtils/KELUtils.dll"));
    const std::string id = AgentId(next);
    tally.Case(result != KE_SUCCESS || setter.name != "KE_SetAgentID" || id == "5", what + ", then " + id);
    std::filesystem::remove(tree.Store("INTEGRA.BAK"));
  }
};

}  // namespace

TEST_CASE("damage: the store cut at every length, and every bit flipped") {
  Damage damage;
  CHECK(damage.getters.size() + damage.setters.size() >= 35);
  const std::string whole = damage.tree.content;
  const std::size_t step = support::IsLong() ? 1 : 101;
  for (std::size_t length = 0; length < whole.size(); length += step)
    damage.Run(whole.substr(0, length), "cut at " + std::to_string(length));
  for (std::size_t bit = 0; bit < 8 * whole.size(); bit += bit < 64 ? std::min<std::size_t>(step, 5) : step) {
    std::string flipped = whole;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ 1 << bit % 8);
    damage.Run(flipped, "bit " + std::to_string(bit));
  }
  damage.tally.note =
      ", a store of " + std::to_string(whole.size()) + " bytes, " + std::to_string(damage.count) + " damages";
}
