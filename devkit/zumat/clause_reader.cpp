#include "zumat/clause_reader.h"

#include <iterator>

namespace zumat {
namespace {

enum Switch : unsigned {
  kEvery = 1,
  kEveryHoursMins = 2,
  kEveryWindow = 4,
  kNext = 8,
  kStartDay = 16,
  kStartTime = 32,
  kStartTimeRnd = 64,
};

/// A unit and a number, such as "Days:7".
std::optional<int> ReadCounted(std::string_view value, std::string_view unit, int low, int high) noexcept {
  const Halves halves = SplitAt(value, ':');
  if (!halves.second || !SameWord(halves.first, unit)) return std::nullopt;
  return ReadNumber(*halves.second, low, high);
}

bool ReadWeekdays(std::string_view value, Clauses& clauses) noexcept {
  std::optional<std::string_view> rest = value;
  while (rest) {
    const Halves halves = SplitAt(*rest, ',');
    unsigned bit = 0;
    for (unsigned day = 0; day < std::size(kWeekdayNames); ++day) {
      if (SameWord(halves.first, kWeekdayNames[day])) bit = 1u << day;
    }
    if (bit == 0) return false;
    clauses.weekdays |= bit;
    rest = halves.second;
  }
  clauses.recurrence = Recurrence::kWeekdays;
  return true;
}

bool ReadEvery(std::string_view value, Clauses& clauses) noexcept {
  struct Unit {
    const char* name;
    int low;
    int high;
    Recurrence recurrence;
  };
  constexpr Unit kUnits[] = {{"Weeks", 1, kMaximumCount, Recurrence::kWeeks},
                             {"Days", 1, kMaximumCount, Recurrence::kDays},
                             {"Boot", 0, kMaximumDelay, Recurrence::kEveryBoot}};
  for (const Unit& unit : kUnits) {
    if (const auto count = ReadCounted(value, unit.name, unit.low, unit.high)) {
      clauses.recurrence = unit.recurrence;
      clauses.count = *count;
      return true;
    }
  }
  return ReadWeekdays(value, clauses);
}

bool ReadHoursMins(std::string_view value, Clauses& clauses) noexcept {
  const Halves halves = SplitAt(value, ':');
  const auto hours = ReadNumber(halves.first, 0, 23);
  const auto minutes = halves.second ? ReadNumber(*halves.second, 0, 59) : std::nullopt;
  if (!hours || !minutes) return false;
  clauses.interval = *hours * 60 + *minutes;
  return clauses.interval > 0;
}

bool Store(std::optional<int> read, int& member) noexcept {
  if (read) member = *read;
  return read.has_value();
}

bool ReadNext(std::string_view value, Clauses& clauses) noexcept {
  clauses.recurrence = Recurrence::kNextBoot;
  return Store(ReadCounted(value, "Boot", 0, kMaximumDelay), clauses.count);
}

struct Clause {
  std::string_view name;
  Switch bit;
  bool (*read)(std::string_view value, Clauses& clauses);
  const char* expected;
};

constexpr Clause kClauses[] = {
    {"-Every", kEvery, ReadEvery, "Weeks:N, Days:N, Boot:SECONDS or days of the week such as Su,M,T,W,Th,F,S"},
    {"-EveryHoursMins", kEveryHoursMins, ReadHoursMins, "HOURS:MINUTES, from 0:1 to 23:59"},
    {"-EveryWindow", kEveryWindow,
     [](std::string_view value, Clauses& to) {
       return Store(ReadCounted(value, "Days", 1, kMaximumCount), to.windowDays);
     },
     "Days:N"},
    {"-Next", kNext, ReadNext, "Boot:SECONDS"},
    {"-StartDay", kStartDay,
     [](std::string_view value, Clauses& to) { return (to.startDay = ReadDay(value)).has_value(); }, "DD/MM/YYYY"},
    {"-StartTime", kStartTime,
     [](std::string_view value, Clauses& to) { return Store(ReadTimeOfDay(value), to.startTime); }, "HH:MM"},
    {"-StartTimeRnd", kStartTimeRnd,
     [](std::string_view value, Clauses& to) { return Store(ReadTimeOfDay(value), to.startTimeEnd); }, "HH:MM"},
};

Outcome CheckStart(unsigned seen, Clauses& clauses) {
  if ((seen & kStartTimeRnd) && !(seen & kStartTime)) return {kMissing, "-StartTimeRnd needs -StartTime"};
  if (!(seen & kStartTimeRnd)) clauses.startTimeEnd = clauses.startTime;
  if (clauses.startTimeEnd < clauses.startTime) return {kBadValue, "-StartTimeRnd is earlier than -StartTime"};
  if (clauses.recurrence == Recurrence::kOnce && !(seen & kStartTime)) return {kMissing, "-StartDay needs -StartTime"};
  return {};
}

}  // namespace

bool ClauseReader::Take(const Word& word, Outcome& outcome) {
  const Halves halves = SplitAt(word.text, ':');
  for (const Clause& clause : kClauses) {
    if (!SameWord(halves.first, clause.name)) continue;
    if (seen_ & clause.bit) {
      outcome = {kRepeated, std::string(clause.name) + " is there twice"};
    } else if (word.quoted || !halves.second || !clause.read(*halves.second, clauses_)) {
      outcome = {kBadValue, OnOneLine(word.text) + ": expected " + std::string(clause.name) + ":" + clause.expected};
    }
    seen_ |= clause.bit;
    return true;
  }
  return false;
}

Outcome ClauseReader::Finish(Clauses& clauses) const {
  Clauses all = clauses_;
  if (!(seen_ & (kEvery | kEveryHoursMins | kNext | kStartDay))) return {kMissing, "no clause tells when the job runs"};
  if ((seen_ & kEveryHoursMins) && !(seen_ & kEvery)) {
    all.recurrence = Recurrence::kWeekdays;
    all.weekdays = kEveryWeekday;
  }
  unsigned allowed = kEvery | kStartDay | kStartTime | kStartTimeRnd;
  if (all.recurrence == Recurrence::kWeekdays) allowed |= kEveryHoursMins;
  if (all.recurrence == Recurrence::kEveryBoot) allowed = kEvery | kEveryWindow;
  if (seen_ & kNext) allowed = kNext;
  if (seen_ & ~allowed) return {kClash, "the time clauses do not go together"};
  Outcome outcome = CheckStart(seen_, all);
  if (outcome.Succeeded()) clauses = all;
  return outcome;
}

Outcome ReadClauses(std::string_view text, Clauses& clauses) {
  const auto words = SplitWords(text);
  if (!words) return {kBadQuotes, "a double quote is out of place"};
  ClauseReader reader;
  for (const Word& word : *words) {
    Outcome outcome;
    if (!reader.Take(word, outcome)) return {kUnknownSwitch, OnOneLine(word.text) + " is no time clause"};
    if (!outcome.Succeeded()) return outcome;
  }
  return reader.Finish(clauses);
}

}  // namespace zumat
