// Reading and changing the agent's identity, compared with the bare Windows calls that this needs.
#include <cstdio>

#include "KELUtils.h"
#include "bench/bare_store.h"
#include "bench/measure.h"
#include "bench/store_tree.h"

namespace {

constexpr std::size_t kRounds = 31;
constexpr int kCallsOfARound = 50;
constexpr double kReadLimit = 1.10;
constexpr double kChangeLimit = 1.15;

// Compares the library's calls with the bare ones. Each returns true on success.
template <typename Call, typename Bare>
bool Measure(const char* work, const char* traced, double limit, Call call, Bare bare) {
  bool good = true;
  const auto repeat = [&good](auto& one) {
    return [&good, &one] {
      for (int i = 0; i < kCallsOfARound; ++i) good = one() && good;
    };
  };
  std::printf("%s, %s the trace library, %d calls a round:\n", work, traced, kCallsOfARound);
  const auto nothing = [] {};
  const bool met = bench::Compare(bench::Side{work, nothing, repeat(call)},
                                  bench::Side{"bare calls", nothing, repeat(bare)}, kRounds, limit);
  if (!good) std::printf("a call FAILED\n");
  return met && good;
}

bool MeasureAll(const bench::StoreTree& tree, const char* traced) {
  bench::BareStore bare(tree.Directory());
  auto* const get = tree.Export<KE_RESULT KE_API(char*, std::int32_t)>("KE_GetAgentID");
  auto* const set = tree.Export<KE_RESULT KE_API(const char*)>("KE_SetAgentID");
  const auto read = [&] {
    char id[64];
    return get(id, sizeof id) == KE_SUCCESS;
  };
  const auto readBare = [&] {
    bare.GetAgentId();
    return true;
  };
  const auto change = [&] { return set("c0ffee00-1234-4321-9876-00d0d0d0d0d1") == KE_SUCCESS; };
  const auto changeBare = [&] { return bare.SetAgentId(); };
  const bool quick = Measure("KE_GetAgentID, cached", traced, kReadLimit, read, readBare);
  return Measure("KE_SetAgentID", traced, kChangeLimit, change, changeBare) && quick;
}

}  // namespace

int main() {
  const bench::StoreTree tree;
  const bool with = MeasureAll(tree, "with");
  tree.RemoveTraceLibrary();
  const bool without = MeasureAll(tree, "without");
  return with && without ? 0 : 1;
}
