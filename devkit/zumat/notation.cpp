#include "zumat/notation.h"

#include <cstdio>

#include "shared/texts.h"

namespace zumat {
namespace {

using std::chrono::year_month_day;

constexpr char kBlanks[] = " \t";

std::optional<Day> DayFrom(std::string_view day, std::string_view month, std::string_view year) noexcept {
  const auto d = ReadNumber(day, 1, 31), m = ReadNumber(month, 1, 12), y = ReadNumber(year, 1970, 9999);
  if (!d || !m || !y) return std::nullopt;
  const year_month_day date{std::chrono::year(*y), std::chrono::month(static_cast<unsigned>(*m)),
                            std::chrono::day(static_cast<unsigned>(*d))};
  return date.ok() ? std::optional(Day(date)) : std::nullopt;
}

std::string_view WithoutLeadingBlanks(std::string_view text) noexcept {
  const auto begin = text.find_first_not_of(kBlanks);
  return begin == std::string_view::npos ? std::string_view() : text.substr(begin);
}

/// Takes the text up to one of the `ends`, or all of it, from the front of `rest`.
std::string_view TakeUpTo(std::string_view& rest, const char* ends) noexcept {
  const std::string_view taken = rest.substr(0, rest.find_first_of(ends));
  rest.remove_prefix(taken.size());
  return taken;
}

}  // namespace

std::optional<int> ReadNumber(std::string_view text, int low, int high) noexcept {
  const auto number = devkit::ParseNumber(text, low, high);
  return number ? std::optional(static_cast<int>(*number)) : std::nullopt;
}

std::optional<int> ReadTimeOfDay(std::string_view text) noexcept {
  if (text.size() != 5 || text[2] != ':') return std::nullopt;
  const auto hours = ReadNumber(text.substr(0, 2), 0, 23);
  const auto minutes = ReadNumber(text.substr(3), 0, 59);
  if (!hours || !minutes) return std::nullopt;
  return *hours * 60 + *minutes;
}

std::string FormatTimeOfDay(int minutes) {
  char text[32];
  std::snprintf(text, sizeof text, "%02d:%02d", minutes / 60, minutes % 60);
  return text;
}

std::optional<Day> ReadDay(std::string_view text) noexcept {
  if (text.size() != 10 || text[2] != '/' || text[5] != '/') return std::nullopt;
  return DayFrom(text.substr(0, 2), text.substr(3, 2), text.substr(6));
}

std::string FormatDay(Day day) {
  const year_month_day date(day);
  char text[32];
  std::snprintf(text, sizeof text, "%02u/%02u/%04d", unsigned{date.day()}, unsigned{date.month()}, int{date.year()});
  return text;
}

std::optional<Second> ReadMoment(std::string_view text) noexcept {
  if (text.size() != 19 || text[4] != '-' || text[7] != '-' || text[10] != 'T' || text[16] != ':') return std::nullopt;
  const auto day = DayFrom(text.substr(8, 2), text.substr(5, 2), text.substr(0, 4));
  const auto minute = ReadTimeOfDay(text.substr(11, 5)), second = ReadNumber(text.substr(17), 0, 59);
  if (!day || !minute || !second) return std::nullopt;
  return *day + std::chrono::minutes(*minute) + std::chrono::seconds(*second);
}

std::string FormatMoment(Second moment) {
  const Day day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::hh_mm_ss time(moment - day);
  const year_month_day date(day);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d", int{date.year()}, unsigned{date.month()},
                unsigned{date.day()}, static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()));
  return text;
}

Halves SplitAt(std::string_view text, char separator) noexcept {
  const auto at = text.find(separator);
  if (at == std::string_view::npos) return {text, std::nullopt};
  return {text.substr(0, at), text.substr(at + 1)};
}

std::string_view ArgumentsOf(std::string_view commandLine) noexcept {
  const bool isQuoted = !commandLine.empty() && commandLine.front() == '"';
  if (isQuoted) commandLine.remove_prefix(1);
  TakeUpTo(commandLine, isQuoted ? "\"" : kBlanks);
  if (isQuoted && !commandLine.empty()) commandLine.remove_prefix(1);
  return WithoutLeadingBlanks(commandLine);
}

std::optional<std::vector<Word>> SplitWords(std::string_view text) {
  std::vector<Word> words;
  for (text = WithoutLeadingBlanks(text); !text.empty(); text = WithoutLeadingBlanks(text)) {
    Word word{TakeUpTo(text, " \t\""), std::nullopt};
    if (!text.empty() && text.front() == '"') {
      text.remove_prefix(1);
      word.quoted = TakeUpTo(text, "\"");
      if (text.empty()) return std::nullopt;
      text.remove_prefix(1);
      if (!TakeUpTo(text, kBlanks).empty()) return std::nullopt;
    }
    words.push_back(word);
  }
  return words;
}

}  // namespace zumat
