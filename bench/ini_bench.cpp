// INI texts of 2 KB to 40 MB: reading compared with inih, which only calls back for each entry, and with SimpleIni;
// writing compared with SimpleIni.
#include <ini.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#define SI_NO_CONVERSION  // narrow texts as they are
#include <SimpleIni.h>

#include "bench/ini_text.h"
#include "bench/measure.h"
#include "store/ini_store.h"

namespace {

constexpr std::size_t kRounds = 9;
constexpr std::size_t kSizes[] = {50, 1000, 10000, 100000, 1000000};
constexpr std::size_t kFewestEntries = 50000;  // of one run, in as many repetitions as it takes

struct Text {
  std::string text;
  std::size_t entries;
};

void Require(bool held) {
  if (!held) std::abort();
}

void ReadStore(const Text& text) {
  store::IniStore store;
  store::ParseIni(text.text, store);
  Require(!store.sections.empty());
}

int CountEntry(void* count, const char*, const char*, const char*) {
  ++*static_cast<std::size_t*>(count);
  return 1;
}

void ReadInih(const Text& text) {
  std::size_t count = 0;
  Require(ini_parse_string(text.text.c_str(), CountEntry, &count) == 0 && count == text.entries);
}

void ReadSimpleIni(const Text& text) {
  CSimpleIniA ini;
  ini.SetMultiKey(false);
  Require(ini.LoadData(text.text) == SI_OK);
}

// Compares two ways to process `subject`, each repeated equally often.
template <typename Subject, typename OtherSubject>
bool CompareWork(const char* name, void (*work)(const Subject&), const Subject& subject, const char* otherName,
                 void (*other)(const OtherSubject&), const OtherSubject& otherSubject, std::size_t repetitions,
                 double limit) {
  const auto nothing = [] {};
  const auto repeat = [repetitions](auto* work, const auto& with) {
    for (std::size_t i = 0; i < repetitions; ++i) work(with);
  };
  return bench::Compare(bench::Side{name, nothing, [&] { repeat(work, subject); }},
                        bench::Side{otherName, nothing, [&] { repeat(other, otherSubject); }}, kRounds, limit);
}

void WriteStore(const store::IniStore& store) { Require(!store::Serialise(store).empty()); }

void WriteSimpleIni(const CSimpleIniA& ini) {
  std::string text;
  Require(ini.Save(text) == SI_OK && !text.empty());
}

bool CompareSize(std::size_t entries) {
  const Text text{bench::MakeIniText(entries, bench::kUsualSection), entries};
  const std::size_t repetitions = std::max<std::size_t>(1, kFewestEntries / entries);
  store::IniStore store;
  store::ParseIni(text.text, store);
  CSimpleIniA ini;
  ini.SetMultiKey(false);
  ini.LoadData(text.text);
  std::printf("-- %zu entries, %zu bytes, %zu times a run\n", entries, text.text.size(), repetitions);
  std::printf("reading, compared with inih: ");
  bool met = CompareWork("IniStore", ReadStore, text, "inih, bare callback", ReadInih, text, repetitions, 1.0);
  std::printf("reading, compared with SimpleIni: ");
  met = CompareWork("IniStore", ReadStore, text, "SimpleIni", ReadSimpleIni, text, repetitions, 1.0 / 3) && met;
  std::printf("writing, compared with SimpleIni: ");
  return CompareWork("IniStore", WriteStore, store, "SimpleIni", WriteSimpleIni, ini, repetitions, 1.0 / 3) && met;
}

}  // namespace

int main() {
  bench::KeepMemory();
  bool met = true;
  for (const std::size_t size : kSizes) met = CompareSize(size) && met;
  return met ? 0 : 1;
}
