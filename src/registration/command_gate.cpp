#include "registration/command_gate.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "frame/install_state.h"
#include "frame/text.h"

namespace registration {
namespace {

// The gaps are meant: no command of a list runs in state 45.
constexpr std::int32_t kTestStates[] = {40, 41, 42, 43, 44, 47, 48};
constexpr std::int32_t kUpgradeStates[] = {40, 42, 43, 44, 46, 47, 48};
constexpr std::int32_t kUpdateStates[] = {40, 41, 42, 43, 44, 46, 47, 48};
constexpr std::int32_t kLastState[] = {48};
constexpr std::span<const std::int32_t> kAnyState{};

struct Command {
  std::string_view name;
  std::span<const std::int32_t> states;  // in which it may run; none listed: in any
};

constexpr Command kCommands[] = {
    {"KELTVEVT", kAnyState},   {"KELTest", kTestStates}, {"KELUpg", kUpgradeStates}, {"KELUpd", kUpdateStates},
    {"KELReport", kLastState}, {"KELQtine", kLastState}, {"KELConf", kAnyState},     {"KELLnchr", kAnyState},
};

}  // namespace

bool IsCommandAllowed(const char* command, std::int32_t state) noexcept {
  if (state >= frame::kInstallComplete) return true;
  if (command == nullptr) return false;
  return std::ranges::any_of(kCommands, [&](const Command& row) {
    if (!frame::SameName(row.name, command)) return false;
    return row.states.empty() || std::ranges::find(row.states, state) != row.states.end();
  });
}

}  // namespace registration
