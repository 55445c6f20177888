// The agent's recurring jobs and its jobs after each boot.
#pragma once

#include <cstdint>

namespace schedule {

/// On which computers a task is scheduled.
enum class TaskCondition { kAlways, kIntegrated, kNotIntegrated };

enum class TaskKind { kPeriodic, kBoot };

struct AgentTask {
  const char* program;
  const char* module;
  const char* arguments;
  std::int32_t taskId;
  TaskKind kind;
  char unit;               // of low and high: 'h' hours, 'm' minutes, 's' seconds
  std::int32_t low, high;  // a boot task's delay lies between them; the period of a periodic task is high
  TaskCondition condition;
  bool option;  // periodic: on a random weekday; boot: within a weekly window
};

inline constexpr TaskKind kPeriodic = TaskKind::kPeriodic, kBoot = TaskKind::kBoot;

// clang-format off
inline constexpr AgentTask kAgentTasks[] = {
    // program    module       arguments     ID  kind      unit low high  condition                      option
    {"KEPLPMNG", "KELTEST",   "",            2, kPeriodic, 'h',  1,  1, TaskCondition::kIntegrated,    false},
    {"KEPLPMNG", "KELTEST",   "",            2, kPeriodic, 'm',  5,  5, TaskCondition::kNotIntegrated, false},
    {"KEPLPMNG", "KELQTINE",  "-A:GETINFO",  4, kPeriodic, 'h',  1,  1, TaskCondition::kAlways,        true},
    {"KEPLPMNG", "KELREPORT", "-R",         12, kPeriodic, 'm', 60, 60, TaskCondition::kAlways,        false},
    {"KEPLPMNG", "KELCONF",   "",            7, kPeriodic, 'h',  1,  1, TaskCondition::kAlways,        false},
    {"KEPLPMNG", "KELUPD",    "",            8, kBoot,     'm',  5, 60, TaskCondition::kAlways,        false},
    {"KEPLPMNG", "KELUPD",    "",            9, kPeriodic, 'h',  1,  1, TaskCondition::kAlways,        false},
    {"KEPLPMNG", "KELUPG",    "-CONTINUE",  11, kPeriodic, 'h',  1,  1, TaskCondition::kAlways,        false},
    {"KEPWINST", "",          "-FORCE",     13, kBoot,     's', 90, 90, TaskCondition::kAlways,        false},
    {"KEPLPMNG", "KELSNET",   "-CONTINUE",  14, kBoot,     'm',  5,  5, TaskCondition::kAlways,        false},
    {"KEPLPMNG", "KELREPORT", "-M",         15, kPeriodic, 'm', 60, 60, TaskCondition::kAlways,        false},
    {"KEPLPMNG", "KELNTF",    "",           16, kPeriodic, 'm', 15, 15, TaskCondition::kIntegrated,    false},
};
// clang-format on

/// Whether a task is scheduled on a computer that is integrated, or is not.
constexpr bool IsScheduled(const AgentTask& task, bool integrated) noexcept {
  return task.condition == TaskCondition::kAlways || (task.condition == TaskCondition::kIntegrated) == integrated;
}

/// The period of a periodic task in minutes.
constexpr std::int32_t PeriodMinutes(const AgentTask& task) noexcept {
  return task.unit == 'h' ? task.high * 60 : task.unit == 's' ? task.high / 60 : task.high;
}

/// The delay of a boot task in seconds: between low and high, as far as `fraction` (0 to 1) says.
constexpr std::int32_t DelaySeconds(const AgentTask& task, double fraction) noexcept {
  const std::int32_t seconds = task.unit == 'h' ? 3600 : task.unit == 'm' ? 60 : 1;
  const std::int32_t low = task.low * seconds, high = task.high * seconds;
  // NOLINTNEXTLINE(bugprone-incorrect-roundings): the value is never negative, and lround is no constant expression
  return high > low ? low + static_cast<std::int32_t>((high - low) * fraction + 0.5) : low;
}

}  // namespace schedule
