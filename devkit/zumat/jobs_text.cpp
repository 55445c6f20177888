#include "zumat/jobs_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "zumat/clause_reader.h"
#include "zumat/clause_text.h"
#include "zumat/command.h"

namespace zumat {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;
constexpr char kMemberNames[][8] = {"id", "program", "command", "clauses", "start", "active", "since"};

Json ToJson(const Job& job) {
  return {{"id", job.id},
          {"program", job.program},
          {"command", job.command},
          {"clauses", FormatClauses(job.clauses)},
          {"start", FormatTimeOfDay(job.start)},
          {"active", job.active},
          {"since", FormatDay(job.since)}};
}

/// The texts of a job; false when one makes no sense.
bool ReadTexts(const Json& object, Job& job) {
  for (const char* name : {"program", "command", "clauses", "start", "since"}) {
    if (!object[name].is_string()) return false;
  }
  job.program = object["program"].get<std::string>();
  job.command = object["command"].get<std::string>();
  const auto start = ReadTimeOfDay(object["start"].get_ref<const std::string&>());
  const auto since = ReadDay(object["since"].get_ref<const std::string&>());
  if (!start || !since || !IsProgram(job.program) || !IsCommandText(job.command)) return false;
  job.start = *start;
  job.since = *since;
  return ReadClauses(object["clauses"].get_ref<const std::string&>(), job.clauses).Succeeded() &&
         job.start >= job.clauses.startTime && job.start <= job.clauses.startTimeEnd;
}

bool ReadJob(const Json& object, Job& job) {
  if (!object.is_object() || object.size() != std::size(kMemberNames)) return false;
  for (const char* name : kMemberNames) {
    if (!object.contains(name)) return false;
  }
  if (!object["id"].is_number_unsigned() || !object["active"].is_boolean()) return false;
  const auto id = object["id"].get<std::uint64_t>();
  if (id == 0 || id > 2147483647) return false;
  job.id = static_cast<int>(id);
  job.active = object["active"].get<bool>();
  return ReadTexts(object, job);
}

/// The value of a text, discarded when it is no JSON. A NUL byte, a byte order mark and a member that is there twice
/// are refused, which the parser would pass over.
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

Outcome Damaged(const std::string& what) { return {kDamaged, "the jobs file is damaged and kept as it is: " + what}; }

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

}  // namespace zumat
