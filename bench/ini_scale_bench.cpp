// The cost of an entry in stores of 50, and of 1,000 to 1,000,000 entries: reading a text into a store, destroying the
// store, and writing it. Each run processes the same million entries, in as many texts as needed, and keeps its results
// until its end, so each run takes the same memory from Windows and each figure includes the cost of its pages.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "bench/ini_text.h"
#include "bench/measure.h"
#include "store/ini_store.h"

namespace {

constexpr std::size_t kRounds = 9;
constexpr std::size_t kSizes[] = {50, 1000, 10000, 100000, 1000000};  // the limit is not for the first
constexpr std::size_t kEntries = 1000000;
constexpr double kLimit = 1.2;  // the most expensive size divided by the cheapest

struct Texts {
  std::vector<std::string> texts;
  std::vector<store::IniStore> stores;
};

Texts MakeTexts(std::size_t size, std::size_t perSection) {
  Texts made;
  for (std::size_t count = 0; count < kEntries; count += size) {
    made.texts.push_back(bench::MakeIniText(size, perSection));
    store::ParseIni(made.texts.back(), made.stores.emplace_back());
  }
  return made;
}

void Read(const Texts& texts) {
  std::vector<store::IniStore> stores(texts.texts.size());
  for (std::size_t i = 0; i < stores.size(); ++i) {
    store::ParseIni(texts.texts[i], stores[i]);
    if (stores[i].sections.empty()) std::abort();
  }
}

void Write(const Texts& texts) {
  std::vector<std::string> written(texts.stores.size());
  for (std::size_t i = 0; i < written.size(); ++i) {
    written[i] = store::Serialise(texts.stores[i]);
    if (written[i].size() != texts.texts[i].size()) std::abort();
  }
}

bool Compare(const char* name, void (*work)(const Texts&), const std::vector<Texts>& sizes) {
  std::vector<std::vector<double>> costs(sizes.size());
  for (const Texts& texts : sizes) work(texts);
  for (std::size_t round = 0; round < kRounds; ++round) {
    for (std::size_t i = 0; i < sizes.size(); ++i) {
      costs[i].push_back(1e6 / kEntries * bench::Milliseconds([&] { work(sizes[i]); }));
    }
  }
  std::vector<bench::Spread> spreads(costs.size());
  std::transform(costs.begin(), costs.end(), spreads.begin(), bench::SpreadOf);
  const auto [cheapest, dearest] =
      std::minmax_element(spreads.begin() + 1, spreads.end(),
                          [](const auto& left, const auto& right) { return left.median < right.median; });
  const double ratio = dearest->median / cheapest->median;
  const bool met = ratio <= kLimit;
  std::printf("%s: ratio %.3f (at most %.2f: %s) of the dearest size to the cheapest, medians of %u rounds\n", name,
              ratio, kLimit, met ? "met" : "NOT MET", static_cast<unsigned>(kRounds));
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    const bench::Spread& cost = spreads[i];
    std::printf("  %7u entries  median %6.1f ns an entry, half of the rounds %6.1f to %6.1f ns\n",
                static_cast<unsigned>(kSizes[i]), cost.median, cost.lower, cost.upper);
  }
  return met;
}

bool CompareShape(std::size_t perSection, const char* reading, const char* writing) {
  std::vector<Texts> sizes;
  for (const std::size_t size : kSizes) sizes.push_back(MakeTexts(size, perSection));
  const bool read = Compare(reading, Read, sizes);
  return Compare(writing, Write, sizes) && read;
}

}  // namespace

int main() {
  bench::KeepMemory();
  const bool usual =
      CompareShape(bench::kUsualSection, "reading, 50 entries a section", "writing, 50 entries a section");
  const bool one = CompareShape(bench::kOneSection, "reading, one section", "writing, one section");
  return usual && one ? 0 : 1;
}
