#include "zumat/jobs.h"

#include <algorithm>

namespace zumat {
namespace {

Jobs::iterator PlaceOf(int id, Jobs& jobs) { return std::ranges::lower_bound(jobs, id, {}, &Job::id); }

std::string Named(int id) { return "job " + std::to_string(id); }

/// The ID of a job without one: that of the same job if it waits for its boot, so adding it twice runs it once.
int OwnId(const Command& command, const Jobs& jobs) {
  int free = kFirstOwnId;
  for (const Job& job : jobs) {
    if (job.id < kFirstOwnId) continue;
    if (job.clauses.recurrence == Recurrence::kNextBoot && !job.armed && !job.lastStart &&
        job.program == command.program && job.command == command.text)
      return job.id;
    if (job.id == free) ++free;
  }
  return free;
}

/// Unchanged clauses keep their first day and the picked start: writing a job again, as each upgrade does, must not
/// delay it. A job of the next boot that was started already waits for another boot.
void Define(Job& job, const Command& command, const Moment& moment, bool isNew) {
  job.program = command.program;
  job.command = command.text;
  const bool isNextBoot = command.clauses.recurrence == Recurrence::kNextBoot;
  if (!isNew && job.clauses == command.clauses && !job.armed && !(isNextBoot && job.lastStart)) return;
  job.armed = false;
  if (isNextBoot) job.lastStart.reset();
  job.handled = moment.now;
  job.clauses = command.clauses;
  job.since = std::chrono::floor<std::chrono::days>(moment.now);
  const auto choices = static_cast<std::uint32_t>(job.clauses.startTimeEnd - job.clauses.startTime + 1);
  job.start = job.clauses.startTime + static_cast<int>(moment.random % choices);
}

Outcome Put(const Command& command, const Moment& moment, Jobs& jobs) {
  const int id = command.taskId ? command.taskId : OwnId(command, jobs);
  if (Job* const job = FindJob(id, jobs)) {
    Define(*job, command, moment, false);
    return {kSuccess, Named(id) + " redefined"};
  }
  if (jobs.size() >= kMaximumJobs) return {kTooManyJobs, "there are " + std::to_string(jobs.size()) + " jobs already"};
  Job job;
  job.id = id;
  Define(job, command, moment, true);
  jobs.insert(PlaceOf(id, jobs), std::move(job));
  return {kSuccess, Named(id) + " added"};
}

/// A job that does not exist counts as deleted.
Outcome Delete(int id, Jobs& jobs) {
  if (std::erase_if(jobs, [id](const Job& job) { return job.id == id; }) == 0)
    return {kSuccess, "there is no " + Named(id) + ": nothing to delete"};
  return {kSuccess, Named(id) + " deleted"};
}

/// A job that does not exist does not run: deactivating it is done, activating it is not. A job that was inactive does
/// not catch up.
Outcome Switch(int id, bool active, Second now, Jobs& jobs) {
  Job* const job = FindJob(id, jobs);
  if (!job && active) return {kNoSuchJob, "there is no " + Named(id)};
  if (!job) return {kSuccess, "there is no " + Named(id) + ": nothing to deactivate"};
  if (active && !job->active) job->handled = now;
  job->active = active;
  return {kSuccess, Named(id) + (active ? " activated" : " deactivated")};
}

}  // namespace

Job* FindJob(int id, Jobs& jobs) {
  const auto place = PlaceOf(id, jobs);
  return place != jobs.end() && place->id == id ? &*place : nullptr;
}

Outcome Change(const Command& command, const Moment& moment, Jobs& jobs) {
  switch (command.action) {
    case Action::kAdd:
    case Action::kEdit:
      return Put(command, moment, jobs);
    case Action::kDelete:
      return Delete(command.taskId, jobs);
    case Action::kActivate:
    case Action::kDeactivate:
      return Switch(command.taskId, command.action == Action::kActivate, moment.now, jobs);
    case Action::kNone:
    case Action::kList:
    case Action::kRun:
    case Action::kStop:
    case Action::kHelp:
      break;
  }
  return {kNoCommand, "nothing to change"};
}

}  // namespace zumat
