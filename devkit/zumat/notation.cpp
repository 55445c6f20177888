#include "zumat/notation.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace zumat {
namespace {

using std::chrono::year_month_day;

bool IsDigit(char character) noexcept { return character >= '0' && character <= '9'; }

char Lower(char character) noexcept {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

}  // namespace

std::optional<int> ReadNumber(std::string_view text, int low, int high) noexcept {
  int number = 0;
  const char* const end = text.data() + text.size();
  if (!std::ranges::all_of(text, IsDigit)) return std::nullopt;
  const auto read = std::from_chars(text.data(), end, number);
  if (read.ec != std::errc() || read.ptr != end || number < low || number > high) return std::nullopt;
  return number;
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
  const auto day = ReadNumber(text.substr(0, 2), 1, 31);
  const auto month = ReadNumber(text.substr(3, 2), 1, 12);
  const auto year = ReadNumber(text.substr(6), 1970, 9999);
  if (!day || !month || !year) return std::nullopt;
  const year_month_day date{std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                            std::chrono::day(static_cast<unsigned>(*day))};
  if (!date.ok()) return std::nullopt;
  return Day(date);
}

std::string FormatDay(Day day) {
  const year_month_day date(day);
  char text[32];
  std::snprintf(text, sizeof text, "%02u/%02u/%04d", unsigned{date.day()}, unsigned{date.month()}, int{date.year()});
  return text;
}

bool SameWord(std::string_view left, std::string_view right) noexcept {
  return std::ranges::equal(left, right, {}, Lower, Lower);
}

Halves SplitAt(std::string_view text, char separator) noexcept {
  const auto at = text.find(separator);
  if (at == std::string_view::npos) return {text, std::nullopt};
  return {text.substr(0, at), text.substr(at + 1)};
}

std::string OnOneLine(std::string_view text) {
  std::string line;
  for (const char character : text) {
    const auto code = static_cast<unsigned char>(character);
    char escape[] = "\\xNN";
    const bool isControl = code < 0x20 || code == 0x7F;
    if (isControl) std::snprintf(escape, sizeof escape, "\\x%02X", code);
    line += isControl ? std::string(escape) : std::string(1, character);
  }
  return line;
}

}  // namespace zumat
