#include "zumat/clauses.h"

#include <iterator>

#include "shared/texts.h"
#include "text/text.h"

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
  if (!halves.second || !text::SameName(halves.first, unit)) return std::nullopt;
  return ReadNumber(*halves.second, low, high);
}

bool ReadWeekdays(std::string_view value, Clauses& clauses) noexcept {
  std::optional<std::string_view> rest = value;
  while (rest) {
    const Halves halves = SplitAt(*rest, ',');
    unsigned bit = 0;
    for (unsigned day = 0; day < std::size(kWeekdayNames); ++day) {
      if (text::SameName(halves.first, kWeekdayNames[day])) bit = 1u << day;
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

std::string Shown(const Word& word) { return devkit::OneLine(std::string(word.text).c_str()); }

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

// Writing.

std::string WeekdayList(unsigned weekdays) {
  std::string list;
  for (unsigned day = 0; day < std::size(kWeekdayNames); ++day) {
    if (weekdays >> day & 1) list.append(list.empty() ? "" : ",").append(kWeekdayNames[day]);
  }
  return list;
}

/// "week", "2 weeks".
std::string Counted(int count, const std::string& unit) {
  return count == 1 ? unit : std::to_string(count) + " " + unit + "s";
}

std::string DescribeRecurrence(const Clauses& clauses) {
  const std::string count = std::to_string(clauses.count);
  std::string days = clauses.weekdays == kEveryWeekday ? "every day" : "on " + WeekdayList(clauses.weekdays);
  switch (clauses.recurrence) {
    case Recurrence::kOnce:
      return "once";
    case Recurrence::kWeekdays:
      if (clauses.interval == 0) return days;
      return "every " + std::to_string(clauses.interval / 60) + " h " + std::to_string(clauses.interval % 60) +
             " min " + days;
    case Recurrence::kDays:
      return "every " + Counted(clauses.count, "day");
    case Recurrence::kWeeks:
      return "every " + Counted(clauses.count, "week");
    case Recurrence::kEveryBoot:
      return "every boot + " + count + " s";
    case Recurrence::kNextBoot:
      return "next boot + " + count + " s";
  }
  return {};
}

std::string FormatRecurrence(const Clauses& clauses) {
  const std::string count = std::to_string(clauses.count);
  switch (clauses.recurrence) {
    case Recurrence::kOnce:
      return {};
    case Recurrence::kWeekdays: {
      const std::string hours = std::to_string(clauses.interval / 60), minutes = std::to_string(clauses.interval % 60);
      return (clauses.interval ? "-EveryHoursMins:" + hours + ":" + minutes + " " : std::string()) +
             "-Every:" + WeekdayList(clauses.weekdays);
    }
    case Recurrence::kDays:
      return "-Every:Days:" + count;
    case Recurrence::kWeeks:
      return "-Every:Weeks:" + count;
    case Recurrence::kEveryBoot:
      return "-Every:Boot:" + count +
             (clauses.windowDays ? " -EveryWindow:Days:" + std::to_string(clauses.windowDays) : "");
    case Recurrence::kNextBoot:
      return "-Next:Boot:" + count;
  }
  return {};
}

}  // namespace

bool ClauseReader::Take(const Word& word, Outcome& outcome) {
  const Halves halves = SplitAt(word.text, ':');
  for (const Clause& clause : kClauses) {
    if (!text::SameName(halves.first, clause.name)) continue;
    if (seen_ & clause.bit) {
      outcome = {kRepeated, std::string(clause.name) + " is there twice"};
    } else if (word.quoted || !halves.second || !clause.read(*halves.second, clauses_)) {
      outcome = {kBadValue, Shown(word) + ": expected " + std::string(clause.name) + ":" + clause.expected};
    }
    seen_ |= clause.bit;
    return true;
  }
  return false;
}

Outcome ClauseReader::Finish(Clauses& clauses) const {
  Clauses all = clauses_;
  if (!(seen_ & (kEvery | kEveryHoursMins | kNext | kStartDay))) return {kMissing, "no clause says when the job runs"};
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
    if (!reader.Take(word, outcome)) return {kUnknownSwitch, Shown(word) + " is no time clause"};
    if (!outcome.Succeeded()) return outcome;
  }
  return reader.Finish(clauses);
}

std::string FormatClauses(const Clauses& clauses) {
  std::string text = FormatRecurrence(clauses);
  const auto add = [&text](const char* name, const std::string& value) {
    text.append(text.empty() ? "" : " ").append(name).append(value);
  };
  if (clauses.IsBoot()) return text;
  if (clauses.startDay) add("-StartDay:", FormatDay(*clauses.startDay));
  add("-StartTime:", FormatTimeOfDay(clauses.startTime));
  if (clauses.startTimeEnd != clauses.startTime) add("-StartTimeRnd:", FormatTimeOfDay(clauses.startTimeEnd));
  return text;
}

std::string DescribeClauses(const Clauses& clauses) {
  std::string text = DescribeRecurrence(clauses);
  if (clauses.windowDays)
    text += ", at most once in " + (clauses.windowDays == 1 ? "a day" : std::to_string(clauses.windowDays) + " days");
  if (clauses.IsBoot()) return text;
  if (clauses.startDay)
    text += (clauses.recurrence == Recurrence::kOnce ? " on " : ", from ") + FormatDay(*clauses.startDay);
  text += clauses.interval ? ", from " : " at ";
  text += FormatTimeOfDay(clauses.startTime);
  if (clauses.startTimeEnd != clauses.startTime) text += "-" + FormatTimeOfDay(clauses.startTimeEnd);
  return text;
}

}  // namespace zumat
