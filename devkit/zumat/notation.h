// How times, days, words and names are written in commands and in the jobs file.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zumat {

/// A day, a minute and a second of the local clock.
using Day = std::chrono::local_days;
using Minute = std::chrono::local_time<std::chrono::minutes>;
using Second = std::chrono::local_seconds;

inline constexpr int kMinutesOfDay = 24 * 60;

/// A decimal number without a sign, between `low` (not negative) and `high`.
std::optional<int> ReadNumber(std::string_view text, int low, int high) noexcept;

/// HH:MM, two digits each, as minutes since midnight.
std::optional<int> ReadTimeOfDay(std::string_view text) noexcept;
std::string FormatTimeOfDay(int minutes);

/// DD/MM/YYYY, a day of the years 1970 to 9999.
std::optional<Day> ReadDay(std::string_view text) noexcept;
std::string FormatDay(Day day);

/// YYYY-MM-DDTHH:MM:SS, of the same years.
std::optional<Second> ReadMoment(std::string_view text) noexcept;
std::string FormatMoment(Second moment);

/// The parts of `text` around the first `separator`; without a separator there is no second part.
struct Halves {
  std::string_view first;
  std::optional<std::string_view> second;
};
Halves SplitAt(std::string_view text, char separator) noexcept;

// The words of a command line. A backslash is an ordinary character: a quoted part ends at the next quote.

struct Word {
  std::string_view text;                   // up to the quoted part, or the whole word
  std::optional<std::string_view> quoted;  // the content of the double quotes at the end of the word
};

/// The part of a process's command line after the program's name, which may be in double quotes.
std::string_view ArgumentsOf(std::string_view commandLine) noexcept;

/// The words, separated by blanks and tabs. A word may end in one quoted part, which holds anything but a double quote.
/// None when a quote is not closed, or something other than a blank follows the closing one.
std::optional<std::vector<Word>> SplitWords(std::string_view text);

}  // namespace zumat
