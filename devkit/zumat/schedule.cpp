#include "zumat/schedule.h"

#include <algorithm>

#include "text/paths.h"
#include "text/text.h"

namespace zumat {
namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::minutes;

constexpr Day kEnd{std::chrono::year(10000) / 1 / 1};

/// Every `period` days from the first start on.
Minute NextOfPeriod(Minute first, days period, Minute now) {
  if (first > now) return first;
  const auto passed = (now - first) / minutes(period);
  return first + (passed + 1) * minutes(period);
}

/// The first start of the day that is later than `now`.
std::optional<Minute> NextOfDay(const Job& job, Day day, Minute now) {
  const Minute first = day + minutes(job.start);
  if (first > now) return first;
  if (job.clauses.interval == 0) return std::nullopt;
  const minutes interval(job.clauses.interval);
  const Minute next = first + ((now - first) / interval + 1) * interval;
  if (next >= day + days(1)) return std::nullopt;
  return next;
}

/// Today's starts may be over; then the same day of the next week is the last one to look at.
std::optional<Minute> NextOfWeek(const Job& job, Day first, Minute now) {
  const Day from = std::max(first, floor<days>(now));
  for (Day day = from; day <= from + days(7); day += days(1)) {
    const unsigned weekday = std::chrono::weekday(day).c_encoding();
    if (!(job.clauses.weekdays >> weekday & 1)) continue;
    if (const auto start = NextOfDay(job, day, now)) return start;
  }
  return std::nullopt;
}

std::optional<Minute> NextOfAny(const Job& job, Day first, Minute now) {
  const Minute firstStart = first + minutes(job.start);
  switch (job.clauses.recurrence) {
    case Recurrence::kOnce:
      return firstStart > now ? std::optional(firstStart) : std::nullopt;
    case Recurrence::kWeekdays:
      return NextOfWeek(job, first, now);
    case Recurrence::kDays:
      return NextOfPeriod(firstStart, days(job.clauses.count), now);
    case Recurrence::kWeeks:
      return NextOfPeriod(firstStart, days(7) * job.clauses.count, now);
    case Recurrence::kEveryBoot:
    case Recurrence::kNextBoot:
      break;
  }
  return std::nullopt;
}

/// The planned start after the one that was handled last.
std::optional<Second> PlannedStart(const Job& job, Second boot, Second now) {
  // A clock that was set back by up to two hours, as at the end of summer time, starts nothing twice. After more, jobs
  // must not wait until it has caught up: the starts of the present minute count.
  const Second handled = job.handled > now + std::chrono::hours(2) ? now - minutes(1) : job.handled;
  if (!job.clauses.IsBoot()) return NextStart(job, floor<minutes>(handled));
  const Second afterBoot = boot + std::chrono::seconds(job.clauses.count);
  const bool isOpen = job.clauses.recurrence == Recurrence::kNextBoot ? job.armed : afterBoot > handled;
  return isOpen ? std::optional(afterBoot) : std::nullopt;
}

}  // namespace

std::optional<Minute> NextStart(const Job& job, Minute now) {
  const auto next = NextOfAny(job, job.clauses.startDay.value_or(job.since), now);
  return next && *next < kEnd ? next : std::nullopt;
}

Step StepOf(const Job& job, bool isRunning, Second boot, Second now) {
  const auto planned = job.active ? PlannedStart(job, boot, now) : std::nullopt;
  if (!planned || *planned > now) return Step::kWait;
  const bool inWindow = job.clauses.windowDays && job.lastStart && now < *job.lastStart + days(job.clauses.windowDays);
  return isRunning || inWindow ? Step::kSkip : Step::kStart;
}

void ArmForBoot(Jobs& jobs) {
  std::erase_if(jobs, [](const Job& job) {
    return job.clauses.recurrence == Recurrence::kNextBoot && job.lastStart && job.process == 0;
  });
  for (Job& job : jobs) job.armed = job.clauses.recurrence == Recurrence::kNextBoot && !job.lastStart;
}

std::string FindProgram(std::string_view tokens, std::string_view program) {
  std::optional<std::string_view> rest = tokens;
  while (rest) {
    Halves line = SplitAt(*rest, '\n');
    rest = line.second;
    if (line.first.ends_with('\r')) line.first.remove_suffix(1);
    const Halves entry = SplitAt(line.first, '=');
    std::string_view path = entry.second.value_or("");
    if (!text::SameName(entry.first, program) || !path.starts_with("e\"") || !path.ends_with('"')) continue;
    path = path.substr(2, path.size() - std::min<std::size_t>(path.size(), 3));
    if (text::IsFullPath(path) && path.find('"') == std::string_view::npos) return std::string(path);
  }
  return {};
}

}  // namespace zumat
