// How numbers, times of day, days and names are written in commands and in the jobs file.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace zumat {

/// A day, and a minute of a day, on the local clock.
using Day = std::chrono::local_days;
using Minute = std::chrono::local_time<std::chrono::minutes>;

inline constexpr int kMinutesOfDay = 24 * 60;

/// A decimal number of digits only, between `low` (not negative) and `high`.
std::optional<int> ReadNumber(std::string_view text, int low, int high) noexcept;

/// HH:MM, two digits each, as minutes since midnight.
std::optional<int> ReadTimeOfDay(std::string_view text) noexcept;
std::string FormatTimeOfDay(int minutes);

/// DD/MM/YYYY, a day of the years 1970 to 9999.
std::optional<Day> ReadDay(std::string_view text) noexcept;
std::string FormatDay(Day day);

/// True when the texts are equal but for the case of ASCII letters.
bool SameWord(std::string_view left, std::string_view right) noexcept;

/// The parts of `text` in front of and behind the first `separator`; the second is none when there is no separator.
struct Halves {
  std::string_view first;
  std::optional<std::string_view> second;
};
Halves SplitAt(std::string_view text, char separator) noexcept;

/// `text` with each control character as \xNN, so that it stays on one line.
std::string OnOneLine(std::string_view text);

}  // namespace zumat
