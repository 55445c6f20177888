// KE_UpgradeStart on an installation of an older version, compared with the bare profile calls that its rows need, on
// the same files. In addition it traces and writes the token file.
#include <cstdio>

#include "KELUtils.h"
#include "bench/installation.h"
#include "bench/measure.h"
#include "bench/profile_calls.h"
#include "win/owner.h"

namespace {

constexpr std::size_t kRounds = 31;
constexpr double kLimit = 1.1;

struct Library {
  explicit Library(const bench::Installation& installation)
      : module(LoadLibraryW(installation.Library().c_str())),
        upgradeStart(reinterpret_cast<decltype(&KE_UpgradeStart)>(
            reinterpret_cast<void*>(GetProcAddress(module.Get(), "KE_UpgradeStart")))) {}

  win::ModuleHandle module;
  decltype(&KE_UpgradeStart) upgradeStart;
};

// Loading the trace library costs every export the same. It is measured separately; here the host has loaded it.
bool MeasureUpgrade(const bench::Installation& installation, const std::vector<bench::ProfileCall>& demanded) {
  const Library library(installation);
  const win::ModuleHandle traceLibrary(LoadLibraryW(installation.TraceLibrary().c_str()));
  const std::string root = installation.Root();
  const auto reset = [&] { installation.Reset(); };
  const auto upgrade = [&] { library.upgradeStart(root.c_str()); };
  const auto bare = [&] {
    for (const auto& call : demanded) bench::Make(call);
  };
  return bench::Compare(bench::Side{"KE_UpgradeStart", reset, upgrade}, bench::Side{"bare profile calls", reset, bare},
                        kRounds, kLimit);
}

void MeasureExport(const bench::Installation& installation) {
  const Library library(installation);
  std::vector<double> times;
  for (std::size_t round = 0; round < kRounds; ++round) {
    times.push_back(bench::Milliseconds([&] { library.upgradeStart(""); }));
  }
  bench::PrintTimes("export that only traces", bench::SpreadOf(times));
}

// One upgrade: counts its calls and compares its result with that of the bare calls.
bool CheckCalls(const bench::Installation& installation, const std::vector<bench::ProfileCall>& demanded) {
  const Library library(installation);
  bench::CountCallsOf(library.module.Get());
  installation.Reset();
  const KE_RESULT result = library.upgradeStart(installation.Root().c_str());
  const bench::CallCounts made = bench::CountedCalls();
  const auto upgraded = installation.Files();
  installation.Reset();
  for (const auto& call : demanded) bench::Make(call);
  const bool same = installation.Files() == upgraded;
  std::printf("profile calls: %u made, %u demanded by the rows; %u more by the trace system, on its own file\n",
              made.others, static_cast<unsigned>(demanded.size()), made.own);
  if (result != KE_SUCCESS) std::printf("KE_UpgradeStart FAILED with %u\n", static_cast<unsigned>(result));
  if (!same) std::printf("the bare calls do NOT give the same files\n");
  return result == KE_SUCCESS && same && made.others == demanded.size();
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): a measurement that cannot be made ends with the exception's text
int main() {
  const bench::Installation installation;
  const auto demanded = bench::DemandedCalls(installation.Root());
  const bool fast = MeasureUpgrade(installation, demanded);
  MeasureExport(installation);
  return CheckCalls(installation, demanded) && fast ? 0 : 1;
}
