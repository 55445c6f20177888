#include "zumat/clause_text.h"

#include <iterator>

namespace zumat {
namespace {

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
