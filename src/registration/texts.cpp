#include "registration/texts.h"

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string_view>

#include "text/text.h"

namespace registration {

namespace {

constexpr std::string_view kPluginModules[] = {"KELREPORT", "KELSCAN",  "KELTASK",  "KELTEST",  "KELUPD",  "KELUPG",
                                               "KELCONF",   "KELLNCHR", "KELQTINE", "KELTVEVT", "KELSNET", "KELNTF"};

void Append(std::string& text, std::initializer_list<std::string_view> parts) {
  for (const auto part : parts) text += part;
}

// The gaps are deliberate: no command of a list runs in state 45.
constexpr std::int32_t kTestStates[] = {40, 41, 42, 43, 44, 47, 48};
constexpr std::int32_t kUpgradeStates[] = {40, 42, 43, 44, 46, 47, 48};
constexpr std::int32_t kUpdateStates[] = {40, 41, 42, 43, 44, 46, 47, 48};
constexpr std::int32_t kLastState[] = {48};
constexpr std::span<const std::int32_t> kAnyState{};

struct Command {
  std::string_view name;
  std::span<const std::int32_t> states;  // in which it may run; empty: in any
};

constexpr Command kCommands[] = {
    {"KELTVEVT", kAnyState},   {"KELTest", kTestStates}, {"KELUpg", kUpgradeStates}, {"KELUpd", kUpdateStates},
    {"KELReport", kLastState}, {"KELQtine", kLastState}, {"KELConf", kAnyState},     {"KELLnchr", kAnyState},
};

}  // namespace

std::string InstallRoot(const char* folder, text::LeadByteTest isLeadByte) {
  std::string root = folder ? folder : "";
  if (text::EndsInBackslash(root, isLeadByte)) root.pop_back();
  return root;
}

std::string QuotedPath(std::string_view root, const InstalledFile& installed) {
  std::string path;
  Append(path, {"\"", root, "\\", installed.folder, "\\", installed.file, "\""});
  return path;
}

std::string PluginTokens(std::string_view root) {
  std::string text;
  for (const auto module : kPluginModules) Append(text, {module, "=", root, "\\", module, "\\", module, ".dll\r\n"});
  return text;
}

std::string SchedulerTokens(std::string_view root) {
  std::string text;
  for (const auto& program : kScheduledPrograms) {
    Append(text, {program.name, "=e", QuotedPath(root, program), "\r\n"});
  }
  return text;
}

bool IsCommandAllowed(const char* command, std::int32_t state) noexcept {
  if (state >= kInstallComplete) return true;
  if (command == nullptr) return false;
  return std::ranges::any_of(kCommands, [&](const Command& row) {
    if (!text::SameName(row.name, command)) return false;
    return row.states.empty() || std::ranges::find(row.states, state) != row.states.end();
  });
}

}  // namespace registration
