#include "zumat/jobs_text.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "shared/texts.h"
#include "zumat/command.h"
#include "zumat/schedule.h"

namespace zumat {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;

constexpr std::string_view kRequired[] = {"id", "program", "command", "clauses", "start", "active", "since"};

/// Optional members.
constexpr std::string_view kOptional[] = {"handled", "armed", "lastStart", "exitCode", "error", "process", "created"};

Json ToJson(const Job& job) {
  Json object = {{"id", job.id},
                 {"program", job.program},
                 {"command", job.command},
                 {"clauses", FormatClauses(job.clauses)},
                 {"start", FormatTimeOfDay(job.start)},
                 {"active", job.active},
                 {"since", FormatDay(job.since)},
                 {"handled", FormatMoment(job.handled)}};
  if (job.armed) object["armed"] = true;
  if (job.lastStart) object["lastStart"] = FormatMoment(*job.lastStart);
  if (job.exitCode) object["exitCode"] = *job.exitCode;
  if (!job.error.empty()) object["error"] = job.error;
  if (job.process != 0) object.update({{"process", job.process}, {"created", job.created}});
  return object;
}

/// Reads a member into `value`; false, also for a missing one, when it has another type or is out of range.
template <typename Number>
bool Read(const Json& object, const char* name, Number& value) {
  const auto member = object.find(name);
  if (member == object.end() || !member->is_number_unsigned()) return false;
  const auto number = member->get<std::uint64_t>();
  value = static_cast<Number>(number);
  return number <= static_cast<std::uint64_t>(std::numeric_limits<Number>::max());
}

bool Read(const Json& object, const char* name, bool& value) {
  const auto member = object.find(name);
  if (member == object.end() || !member->is_boolean()) return false;
  value = member->get<bool>();
  return true;
}

bool Read(const Json& object, const char* name, std::string& value) {
  const auto member = object.find(name);
  if (member == object.end() || !member->is_string()) return false;
  value = member->get<std::string>();
  return true;
}

bool Read(const Json& object, const char* name, Second& value) {
  std::string text;
  const auto moment = Read(object, name, text) ? ReadMoment(text) : std::nullopt;
  if (moment) value = *moment;
  return moment.has_value();
}

template <typename Value>
bool Read(const Json& object, const char* name, std::optional<Value>& value) {
  return Read(object, name, value.emplace());
}

/// A member that may be missing.
template <typename Value>
bool ReadOptional(const Json& object, const char* name, Value& value) {
  return !object.contains(name) || Read(object, name, value);
}

bool ReadRuns(const Json& object, Job& job) {
  job.handled = job.since;
  return ReadOptional(object, "handled", job.handled) && ReadOptional(object, "armed", job.armed) &&
         ReadOptional(object, "lastStart", job.lastStart) && ReadOptional(object, "exitCode", job.exitCode) &&
         ReadOptional(object, "error", job.error) && job.error.size() <= kMaximumError &&
         ReadOptional(object, "process", job.process) && ReadOptional(object, "created", job.created);
}

bool ReadJob(const Json& object, Job& job) {
  if (!object.is_object()) return false;
  for (const auto& [name, value] : object.items()) {
    if (std::ranges::find(kRequired, name) == std::end(kRequired) &&
        std::ranges::find(kOptional, name) == std::end(kOptional))
      return false;
  }
  std::string clauses, start, since;
  if (!Read(object, "id", job.id) || job.id == 0 || !Read(object, "program", job.program) ||
      !Read(object, "command", job.command) || !Read(object, "clauses", clauses) || !Read(object, "start", start) ||
      !Read(object, "active", job.active) || !Read(object, "since", since))
    return false;
  const auto minute = ReadTimeOfDay(start);
  const auto day = ReadDay(since);
  if (!minute || !day || !IsProgram(job.program) || !IsCommandText(job.command) ||
      !ReadClauses(clauses, job.clauses).Succeeded())
    return false;
  job.start = *minute;
  job.since = *day;
  return job.start >= job.clauses.startTime && job.start <= job.clauses.startTimeEnd && ReadRuns(object, job);
}

/// The value of a text, discarded when it is no JSON. A NUL byte, a byte order mark and a repeated member are
/// refused, which the parser would ignore.
Json ParseStrictly(std::string_view text) {
  if (text.find('\0') != text.npos || text.starts_with("\xEF\xBB\xBF")) return Json(Json::value_t::discarded);
  bool repeated = false;
  std::vector<std::vector<std::string>> open;  // the members seen of each object that is not closed yet
  const auto look = [&](int, Json::parse_event_t event, Json& value) {
    if (event == Json::parse_event_t::object_start) open.emplace_back();
    if (event == Json::parse_event_t::object_end) open.pop_back();
    if (event == Json::parse_event_t::key) {
      const auto& name = value.get_ref<const std::string&>();
      repeated |= std::ranges::find(open.back(), name) != open.back().end();
      open.back().push_back(name);
    }
    return true;
  };
  Json parsed = Json::parse(text, look, false);
  return repeated ? Json(Json::value_t::discarded) : parsed;
}

Outcome Damaged(const std::string& problem) {
  return {kDamaged, "the jobs file is damaged and kept as it is: " + problem};
}

// The output of -list.

constexpr std::size_t kColumns = 8;
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

/// The day and the time of day of a moment, as commands have them.
std::string Shown(Second moment) {
  const Day day = std::chrono::floor<std::chrono::days>(moment);
  return FormatDay(day) + " " +
         FormatTimeOfDay(static_cast<int>(std::chrono::floor<std::chrono::minutes>(moment - day).count()));
}

/// YYYY-MM-DDTHH:MM
std::string IsoMinute(Second moment) { return FormatMoment(moment).substr(0, 16); }

std::optional<Minute> NextOf(const Job& job, Second now) {
  return NextStart(job, std::chrono::floor<std::chrono::minutes>(now));
}

std::string NextCell(const Job& job, Second now) {
  if (!job.active) return "-";
  if (job.clauses.IsBoot()) return "boot + " + std::to_string(job.clauses.count) + " s";
  const auto next = NextOf(job, now);
  return next ? Shown(*next) : "none";
}

/// The result of the last start: its exit code, or an error.
std::string ResultCell(const Job& job) {
  if (job.process != 0) return "running";
  if (!job.error.empty()) return Shortened(job.error);
  return job.exitCode ? std::to_string(*job.exitCode) : "-";
}

Row RowOf(const Job& job, Second now) {
  return {std::to_string(job.id),
          job.program,
          Shortened(devkit::OneLine(job.command.c_str(), kMaximumCommandText)),
          DescribeClauses(job.clauses),
          job.active ? "yes" : "no",
          NextCell(job, now),
          job.lastStart ? Shown(*job.lastStart) : "-",
          ResultCell(job)};
}

std::array<std::size_t, kColumns> WidthsOf(const std::vector<Row>& rows) {
  std::array<std::size_t, kColumns> widths{};
  for (const Row& row : rows) {
    for (std::size_t column = 0; column < kColumns; ++column)
      widths[column] = std::max(widths[column], WidthOf(row[column]));
  }
  return widths;
}

Json ListedJson(const Job& job, Second now) {
  Json object = {{"id", job.id},
                 {"program", job.program},
                 {"command", job.command},
                 {"clauses", FormatClauses(job.clauses)},
                 {"recurrence", DescribeClauses(job.clauses)},
                 {"active", job.active},
                 {"nextStart", nullptr},
                 {"secondsAfterBoot", nullptr},
                 {"lastStart", nullptr},
                 {"exitCode", nullptr},
                 {"error", nullptr},
                 {"running", job.process != 0}};
  if (job.lastStart) object["lastStart"] = FormatMoment(*job.lastStart);
  if (job.exitCode) object["exitCode"] = *job.exitCode;
  if (!job.error.empty()) object["error"] = job.error;
  if (!job.active) return object;
  if (job.clauses.IsBoot()) object["secondsAfterBoot"] = job.clauses.count;
  if (const auto next = NextOf(job, now)) object["nextStart"] = IsoMinute(*next);
  return object;
}

}  // namespace

std::string FormatJobs(const Jobs& jobs) {
  Json array = Json::array();
  for (const Job& job : jobs) array.push_back(ToJson(job));
  const Json all = {{"version", kVersion}, {"jobs", std::move(array)}};
  return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

Outcome ReadJobs(std::string_view text, Jobs& jobs) {
  if (text.size() > kMaximumJobsText) return Damaged("too large");
  const Json all = ParseStrictly(text);
  if (!all.is_object() || all.size() != 2 || !all.contains("version") || !all.contains("jobs") ||
      !all["jobs"].is_array())
    return Damaged("no list of jobs");
  if (!all["version"].is_number_unsigned() || all["version"] != kVersion)
    return Damaged("not of version " + std::to_string(kVersion));
  if (all["jobs"].size() > kMaximumJobs) return Damaged("too many jobs");
  Jobs read;
  for (const Json& object : all["jobs"]) {
    Job job;
    if (!ReadJob(object, job)) return Damaged("entry " + std::to_string(read.size() + 1) + " is no job");
    read.push_back(std::move(job));
  }
  std::ranges::sort(read, {}, &Job::id);
  if (std::ranges::adjacent_find(read, {}, &Job::id) != read.end()) return Damaged("two jobs have the same task ID");
  jobs = std::move(read);
  return {};
}

std::string RenderTable(const Jobs& jobs, Second now) {
  if (jobs.empty()) return "There are no jobs.\n";
  std::vector<Row> rows = {
      {"Task ID", "Program", "Command", "Recurrence", "Active", "Next start", "Last start", "Result"}};
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

std::string RenderJson(const Jobs& jobs, Second now) {
  Json array = Json::array();
  for (const Job& job : jobs) array.push_back(ListedJson(job, now));
  const Json all = {{"version", 1}, {"now", IsoMinute(now)}, {"jobs", std::move(array)}};
  return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace zumat
