#include "schedule/commands.h"

namespace schedule {
namespace {

constexpr char kScheduler[] = "zumat ";

std::string_view Text(const char* text) { return text ? text : std::string_view(); }

std::string TaskSwitch(std::int32_t taskId) { return "-TaskID:" + std::to_string(taskId); }

// PROGRAM:"MODULE ARGUMENTS", or PROGRAM:"MODULE" without arguments.
std::string JobText(const Job& job) {
  std::string text(Text(job.program));
  text.append(":\"").append(Text(job.module));
  if (!Text(job.arguments).empty()) text.append(" ").append(Text(job.arguments));
  return text += '"';
}

std::string JobCommand(const char* verb, const Job& job, std::string_view clauses) {
  return kScheduler + TaskSwitch(job.taskId) + verb + JobText(job).append(clauses);
}

}  // namespace

std::string AddJobCommand(const Job& job, std::string_view clauses) { return JobCommand(" -addjob:", job, clauses); }

std::string EditJobCommand(const Job& job, std::string_view clauses) {
  return JobCommand(" -editjob:0:", job, clauses);
}

std::string FixedDayClauses(const char* startDay, const char* startTime) {
  return std::string(" -StartDay:").append(startDay).append(" -StartTime:").append(startTime);
}

std::string NextBootCommand(std::string_view command, std::int32_t delaySeconds) {
  std::string text = kScheduler;
  text.append("-addjob:").append(kPluginManager).append(":\"").append(command);
  return text + "\" -Next:Boot:" + std::to_string(delaySeconds);
}

std::string DeleteJobCommand(std::int32_t taskId) {
  return kScheduler + ("-DeleteJob " + TaskSwitch(taskId)) + " -YES";
}

std::string ActivateJobCommand(std::int32_t taskId) { return kScheduler + TaskSwitch(taskId) + " -activate:0"; }

std::string DeactivateJobCommand(std::int32_t taskId) { return kScheduler + TaskSwitch(taskId) + " -deactivate:0"; }

}  // namespace schedule
