// Compares two ways to do the same work. Their runs alternate, so other load on the machine affects both.
#pragma once

#ifdef _WIN32
#include <windows.h>
#else
#include <time.h>
#endif

#include <algorithm>
#include <cstdio>
#include <vector>

namespace bench {

/// The median of several runs, and the bounds of their middle half.
struct Spread {
  double median;
  double lower;
  double upper;
};

inline Spread SpreadOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t count = values.size();
  return {values[count / 2], values[count / 4], values[count - 1 - count / 4]};
}

/// The clock, in milliseconds: on Windows the elapsed time, since other processes are measured too; elsewhere the
/// processor time of this process, which excludes other load.
inline double Now() {
#ifdef _WIN32
  LARGE_INTEGER frequency, now;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&now);
  return 1000.0 * static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
#else
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return 1000.0 * static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e6;
#endif
}

/// The duration of `work()` in milliseconds.
template <typename Work>
double Milliseconds(Work work) {
  const double start = Now();
  work();
  return Now() - start;
}

/// One side: its name in the output, an unmeasured preparation before each run, and the run.
template <typename Prepare, typename Run>
struct Side {
  const char* name;
  Prepare prepare;
  Run run;
};
template <typename Prepare, typename Run>
Side(const char*, Prepare, Run) -> Side<Prepare, Run>;

inline void PrintTimes(const char* name, const Spread& times) {
  std::printf("  %-24s median %8.3f ms, half of the runs %8.3f to %8.3f ms\n", name, times.median, times.lower,
              times.upper);
}

/// Runs both sides `rounds` times, at least 7, after one unmeasured run of each; they take turns in running first.
/// Prints the median ratio of `measured` to `reference` and both times. Returns true if that ratio is at most `limit`.
template <typename Measured, typename Reference>
bool Compare(const Measured& measured, const Reference& reference, std::size_t rounds, double limit) {
  const auto run = [](const auto& side) {
    side.prepare();
    return Milliseconds(side.run);
  };
  run(measured);
  run(reference);
  std::vector<double> ratios, times[2];
  for (std::size_t round = 0; round < rounds; ++round) {
    const bool first = round % 2 == 0;
    if (first) times[0].push_back(run(measured));
    times[1].push_back(run(reference));
    if (!first) times[0].push_back(run(measured));
    ratios.push_back(times[0].back() / times[1].back());
  }
  const Spread ratio = SpreadOf(ratios);
  std::printf("ratio %.3f (at most %.2f: %s), median of %u rounds, half of them %.3f to %.3f\n", ratio.median, limit,
              ratio.median <= limit ? "met" : "NOT MET", static_cast<unsigned>(rounds), ratio.lower, ratio.upper);
  PrintTimes(measured.name, SpreadOf(times[0]));
  PrintTimes(reference.name, SpreadOf(times[1]));
  return ratio.median <= limit;
}

}  // namespace bench
