// KELMNAPI.dll: runs components of the product, as programs or action modules. No exception leaves a function, and each
// keeps the caller's last-error value.
#include "KELMNAPI.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "KEAction.h"
#include "shared/files.h"
#include "shared/texts.h"
#include "siblings/functions.h"
#include "text/text.h"
#include "win/file.h"
#include "win/process.h"

using namespace devkit;

namespace {

constexpr std::size_t kLongestCommand = 8191, kLongestName = 64;
constexpr std::int32_t kUsualWaitMilliseconds = 10 * 60 * 1000, kLongestWaitMilliseconds = 60 * 60 * 1000;
constexpr std::uint32_t kRunAction = 0;  // the first argument of an action module's Do: run now

/// The outcome of a call. The result is a Result, or the number that a script sets.
struct Outcome {
  int result = kSuccess;
  std::optional<std::int32_t> exitCode = {};  // none: the caller's stays as it was
};

/// 1 to 64 ASCII letters and digits: no name leads out of the product's folder. Nor may it be a device, which Windows
/// knows in every folder and with any extension.
bool IsComponent(std::string_view name) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  if (name.empty() || name.size() > kLongestName ||
      !std::ranges::all_of(name, [&](char c) { return isLetter(c) || isDigit(c); }))
    return false;
  const bool numbered = name.size() == 4 && isDigit(name[3]);
  for (const char* device : {"CON", "PRN", "AUX", "NUL", "COM", "LPT"}) {
    const bool takesNumber = *device == 'L' || std::strcmp(device, "COM") == 0;
    if (takesNumber == numbered && text::SameName(name.substr(0, numbered ? 3 : name.size()), device)) return false;
  }
  return true;
}

Outcome RunProgram(const std::string& path, std::string_view rest) {
  const auto limit = ReadNumber("WAIT", "Milliseconds", kUsualWaitMilliseconds, 0, kLongestWaitMilliseconds);
  if (!limit) return {kBadSettings};
  const win::Process process = win::StartProcess(
      ("\"" + path + "\"").append(rest),
      {.application = path.c_str(), .creationFlags = CREATE_NO_WINDOW, .startupFlags = STARTF_FORCEOFFFEEDBACK});
  if (!process) return {kNotStarted};
  if (process.Wait(static_cast<DWORD>(*limit)) != WAIT_OBJECT_0) return {kNotEnded};
  const auto exitCode = process.ExitCode();
  return exitCode ? Outcome{kSuccess, static_cast<std::int32_t>(*exitCode)} : Outcome{kNotEnded};
}

Outcome CallAction(const std::string& path, std::uint32_t second) {
  const win::ModuleHandle module(LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
  if (!module) return {kNotStarted};
  const auto action = reinterpret_cast<decltype(&Do)>(reinterpret_cast<void*>(GetProcAddress(module.Get(), "Do")));
  if (action == nullptr) return {kNotStarted};
  return {kSuccess, static_cast<std::int32_t>(action(kRunAction, second))};
}

/// Runs `..\<component>\<component>.exe` with the rest of the command, else calls Do of the DLL of that name.
Outcome RunCommand(const char* text, std::uint32_t second) {
  const std::string_view command(text, strnlen(text, kLongestCommand + 1));
  const std::string_view name = command.substr(0, command.find_first_of(" \t"));
  if (command.size() > kLongestCommand || !IsComponent(name)) return {kBadCommand};
  const std::string stem = NextToModule("..\\").append(name).append("\\").append(name);
  if (win::Exists(stem + ".exe")) return RunProgram(stem + ".exe", command.substr(name.size()));
  return win::Exists(stem + ".dll") ? CallAction(stem + ".dll", second) : Outcome{kNoComponent};
}

/// The shape of every function that runs something: logs `<function>;<result>;<exit code, or ->;<command>`. A call
/// counts although its line could not be written: the component has run.
template <typename Body>
int RunLogged(const char* function, const char* command, std::int32_t* exitCode, Body body) noexcept {
  const win::KeptLastError kept;
  Outcome outcome{kUnexpected};
  try {
    outcome = body();
    const std::string code = outcome.exitCode ? std::to_string(*outcome.exitCode) : "-";
    LogCall(std::string(function) + ";" + std::to_string(outcome.result) + ";" + code + ";" + OneLine(command));
  } catch (...) {
  }
  if (outcome.exitCode) *exitCode = *outcome.exitCode;
  return outcome.result;
}

/// The results of an update that a developer has put into the settings, instead of an update: the value of Result, and
/// the number of ExitCodes whose turn it is. None without either key.
std::optional<Outcome> ScriptedUpdate(const char* function, std::atomic<std::uint32_t>& turn) {
  const auto result = ReadSetting(function, "Result"), codes = ReadSetting(function, "ExitCodes");
  if (result == "" && codes == "") return std::nullopt;
  const auto numbers = ParseNumbers(codes == "" ? "0" : codes.value_or(""));
  const auto number = ParseNumber(result == "" ? "0" : result.value_or(""), INT32_MIN, INT32_MAX);
  if (!number || numbers.empty()) return Outcome{kBadSettings};
  return Outcome{static_cast<int>(*number), numbers[turn++ % numbers.size()]};
}

int Update(const char* function, bool forceContinue, std::int32_t* exitCode, const char* values) noexcept {
  static constinit std::atomic<std::uint32_t> s_turns[2];
  char command[96];
  std::snprintf(command, sizeof command, "KELUPD -UpdateNow%s%s", forceContinue ? " -ForceContinue" : "", values);
  return RunLogged(function, command, exitCode, [&]() -> Outcome {
    if (exitCode == nullptr) return {kBadArgument};
    const auto scripted = ScriptedUpdate(function, s_turns[*values != '\0']);
    return scripted ? *scripted : RunCommand(command, forceContinue);
  });
}

}  // namespace

extern "C" {

int KE_SIBLING_CALL Run(const char* command, int32_t* exitCode) {
  return RunLogged(__func__, command, exitCode, [&] {
    return command != nullptr && exitCode != nullptr ? RunCommand(command, 0) : Outcome{kBadArgument};
  });
}

int KE_SIBLING_CALL UpdateNow(int32_t forceContinue, int32_t* exitCode) {
  return Update(__func__, forceContinue != 0, exitCode, "");
}

int KE_SIBLING_CALL UpdateNowEx(int32_t forceContinue, int32_t* exitCode, uint32_t first, uint32_t second) {
  char values[40];
  std::snprintf(values, sizeof values, " -Values:%lu,%lu", static_cast<unsigned long>(first),
                static_cast<unsigned long>(second));
  return Update(__func__, forceContinue != 0, exitCode, values);
}

#define SKIP(name, presence)
#define NOT_SUPPORTED(name, presence)                                            \
  int KE_SIBLING_CALL name(void) {                                               \
    return RunLogged(#name, "", nullptr, [] { return Outcome{kNotSupported}; }); \
  }
KE_LAUNCHER_FUNCTIONS(SKIP, NOT_SUPPORTED)

}  // extern "C"
