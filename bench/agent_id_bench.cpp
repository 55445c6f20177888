// The agent's identity, read from the cached store, beside the bare platform calls that this demands.
#include <cstdio>

#include "KELUtils.h"
#include "bench/bare_trace.h"
#include "bench/measure.h"
#include "bench/store_tree.h"

namespace {

constexpr std::size_t kRounds = 31;
constexpr int kCallsOfARound = 50;
constexpr double kReadLimit = 1.10;

// What reading the cached store demands: is there a start copy to repair from, and is the file the one that was read?
class BareStore {
 public:
  explicit BareStore(const std::string& directory)
      : trace_(directory),
        live_(directory + "\\..\\KESAgent\\INTEGRA.DAT"),
        start_(directory + "\\..\\KESAgent\\INTEGRA.START") {}

  void GetAgentId() {
    trace_.Open();
    trace_.Line("KE_GetAgentID", "Function start");
    trace_.Line("ReadIntegraDat", "Function start");
    found_ = GetFileAttributesA(start_.c_str()) != INVALID_FILE_ATTRIBUTES;
    WIN32_FILE_ATTRIBUTE_DATA status;
    GetFileAttributesExA(live_.c_str(), GetFileExInfoStandard, &status);
    trace_.Line("ReadIntegraDat", "Function end. Return code (0)");
    trace_.Line("KE_GetAgentID", "Function end. Return code (0)");
    trace_.Close();
  }

 private:
  bench::BareTrace trace_;
  std::string live_, start_;
  bool found_ = false;
};

bool MeasureReading(const bench::StoreTree& tree, const char* traced) {
  BareStore bare(tree.Directory());
  auto* const get = tree.Export<KE_RESULT KE_API(char*, std::int32_t)>("KE_GetAgentID");
  KE_RESULT worst = KE_SUCCESS;
  const auto read = [&] {
    char id[64];
    for (int call = 0; call < kCallsOfARound; ++call) worst |= get(id, sizeof id);
  };
  const auto readBare = [&] {
    for (int call = 0; call < kCallsOfARound; ++call) bare.GetAgentId();
  };
  std::printf("KE_GetAgentID, cached, %s the trace library, %d calls a round:\n", traced, kCallsOfARound);
  const auto nothing = [] {};
  const bool met = bench::Compare(bench::Side{"KE_GetAgentID", nothing, read},
                                  bench::Side{"bare calls", nothing, readBare}, kRounds, kReadLimit);
  if (worst != KE_SUCCESS) std::printf("KE_GetAgentID FAILED\n");
  return met && worst == KE_SUCCESS;
}

}  // namespace

int main() {
  const bench::StoreTree tree;
  const bool with = MeasureReading(tree, "with");
  tree.RemoveTraceLibrary();
  const bool without = MeasureReading(tree, "without");
  return with && without ? 0 : 1;
}
