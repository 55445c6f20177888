// The command lines of the scheduler, a program of its own. Texts are inserted as they stand; nothing is cut.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace schedule {

/// A job of the scheduler: the program that it starts, and under it a module with its arguments. Null texts are empty.
struct Job {
  const char* program;
  const char* module;
  const char* arguments;
  std::int32_t taskId;
};

/// The program that the scheduler starts for the modules of the plug-in manager.
inline constexpr char kPluginManager[] = "KEPLPMNG";

/// The commands that create a job, and that redefine the one of its task ID; `clauses` begin with a blank.
std::string AddJobCommand(const Job& job, std::string_view clauses);
std::string EditJobCommand(const Job& job, std::string_view clauses);

/// The clauses of a job at a fixed day and time, in the scheduler's own notation.
std::string FixedDayClauses(const char* startDay, const char* startTime);

/// Has the plug-in manager run `command` once, so many seconds after the next boot.
std::string NextBootCommand(std::string_view command, std::int32_t delaySeconds);

std::string DeleteJobCommand(std::int32_t taskId);
std::string ActivateJobCommand(std::int32_t taskId);
std::string DeactivateJobCommand(std::int32_t taskId);

}  // namespace schedule
