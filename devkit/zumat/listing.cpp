#include "zumat/listing.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "zumat/clause_text.h"
#include "zumat/next_start.h"

namespace zumat {
namespace {

using Json = nlohmann::ordered_json;
constexpr std::size_t kColumns = 6;
using Row = std::array<std::string, kColumns>;

constexpr std::size_t kMaximumWidth = 60;  // characters of a cell; -list --json shows all

/// Characters of UTF-8: all bytes but the following ones of a character.
bool BeginsCharacter(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

std::size_t WidthOf(const std::string& text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, BeginsCharacter));
}

std::string Shortened(const std::string& text) {
  std::size_t characters = 0;
  std::size_t end = 0;  // where the character begins that gives way to the dots
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (BeginsCharacter(text[at]) && ++characters == kMaximumWidth - 2) end = at;
  }
  return characters <= kMaximumWidth ? text : text.substr(0, end) + "...";
}

/// The time of day and the day of a moment, in the form of commands.
std::string TimeOf(Minute moment) {
  return FormatTimeOfDay(static_cast<int>((moment - std::chrono::floor<std::chrono::days>(moment)).count()));
}

std::string DayOf(Minute moment) { return FormatDay(std::chrono::floor<std::chrono::days>(moment)); }

/// YYYY-MM-DDTHH:MM
std::string IsoOf(Minute moment) {
  const std::string day = DayOf(moment);
  return day.substr(6) + "-" + day.substr(3, 2) + "-" + day.substr(0, 2) + "T" + TimeOf(moment);
}

std::string NextCell(const Job& job, Minute now) {
  if (!job.active) return "-";
  if (job.clauses.IsBoot()) return "boot + " + std::to_string(job.clauses.count) + " s";
  const auto next = NextStart(job, now);
  return next ? DayOf(*next) + " " + TimeOf(*next) : "none";
}

Row RowOf(const Job& job, Minute now) {
  return {std::to_string(job.id),    job.program,       Shortened(OnOneLine(job.command)), DescribeClauses(job.clauses),
          job.active ? "yes" : "no", NextCell(job, now)};
}

std::array<std::size_t, kColumns> WidthsOf(const std::vector<Row>& rows) {
  std::array<std::size_t, kColumns> widths{};
  for (const Row& row : rows) {
    for (std::size_t column = 0; column < kColumns; ++column)
      widths[column] = std::max(widths[column], WidthOf(row[column]));
  }
  return widths;
}

Json ToJson(const Job& job, Minute now) {
  Json object = {{"id", job.id},
                 {"program", job.program},
                 {"command", job.command},
                 {"clauses", FormatClauses(job.clauses)},
                 {"recurrence", DescribeClauses(job.clauses)},
                 {"active", job.active},
                 {"nextStart", nullptr},
                 {"secondsAfterBoot", nullptr}};
  if (!job.active) return object;
  if (job.clauses.IsBoot()) object["secondsAfterBoot"] = job.clauses.count;
  if (const auto next = NextStart(job, now)) object["nextStart"] = IsoOf(*next);
  return object;
}

}  // namespace

std::string RenderTable(const Jobs& jobs, Minute now) {
  if (jobs.empty()) return "There are no jobs.\n";
  std::vector<Row> rows = {{"Task ID", "Program", "Command", "Recurrence", "Active", "Next start"}};
  for (const Job& job : jobs) rows.push_back(RowOf(job, now));
  const auto widths = WidthsOf(rows);
  std::string table;
  for (const Row& row : rows) {
    for (std::size_t column = 0; column + 1 < kColumns; ++column)
      table += row[column] + std::string(widths[column] - WidthOf(row[column]) + 2, ' ');
    table += row.back() + "\n";
  }
  return table;
}

std::string RenderJson(const Jobs& jobs, Minute now) {
  Json array = Json::array();
  for (const Job& job : jobs) array.push_back(ToJson(job, now));
  const Json all = {{"version", 1}, {"now", IsoOf(now)}, {"jobs", std::move(array)}};
  return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace zumat
