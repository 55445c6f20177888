// The time clauses of a command: when a job runs.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "zumat/notation.h"
#include "zumat/results.h"

namespace zumat {

enum class Recurrence {
  kOnce,       // at the first day
  kWeekdays,   // on days of the week, once or every so many minutes
  kDays,       // every `count` days from the first day on
  kWeeks,      // every `count` weeks from the first day on
  kEveryBoot,  // `count` seconds after each boot
  kNextBoot,   // `count` seconds after the next boot only
};

/// The names of the days of the week, in the order of the bits of Clauses::weekdays.
inline constexpr std::string_view kWeekdayNames[] = {"Su", "M", "T", "W", "Th", "F", "S"};
inline constexpr unsigned kEveryWeekday = (1u << 7) - 1;

inline constexpr int kMaximumCount = 1000000;     // of days and weeks
inline constexpr int kMaximumDelay = 2147483647;  // seconds after boot

/// When a job runs. Members that the recurrence does not use have their default.
struct Clauses {
  Recurrence recurrence = Recurrence::kOnce;
  int count = 0;
  unsigned weekdays = 0;        // a bit for each day, Sunday first
  int interval = 0;             // kWeekdays: minutes between two starts of a day; 0 for one start
  int windowDays = 0;           // kEveryBoot: runs at most once in so many days; 0 for no such limit
  int startTime = 0;            // minutes since midnight; the first start of a day is picked at random between
  int startTimeEnd = 0;         // `startTime` and `startTimeEnd`, both included
  std::optional<Day> startDay;  // the first day; none: the day on which the clauses were given

  bool operator==(const Clauses&) const = default;

  bool IsBoot() const noexcept { return recurrence == Recurrence::kEveryBoot || recurrence == Recurrence::kNextBoot; }
};

/// Collects clauses from the words of a command, in any order.
class ClauseReader {
 public:
  /// True when the word is a time clause; `outcome` is then kSuccess, kBadValue or kRepeated.
  bool Take(const Word& word, Outcome& outcome);

  /// True when a clause was taken.
  bool Any() const noexcept { return seen_ != 0; }

  /// The clauses together: kMissing, kClash or kBadValue when they make no sense.
  Outcome Finish(Clauses& clauses) const;

 private:
  Clauses clauses_;
  unsigned seen_ = 0;
};

/// Reads a text of nothing but clauses. The codes are those of ClauseReader, kBadQuotes and kUnknownSwitch.
Outcome ReadClauses(std::string_view text, Clauses& clauses);

/// The clauses as switches. ReadClauses makes the same clauses of the text.
std::string FormatClauses(const Clauses& clauses);

/// The clauses in words, such as "every 2 weeks at 10:00".
std::string DescribeClauses(const Clauses& clauses);

}  // namespace zumat
