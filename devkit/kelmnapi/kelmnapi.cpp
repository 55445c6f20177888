// KELMNAPI.dll: the exported functions. No exception leaves them, and each keeps the caller's last-error value.
#include "KELMNAPI.h"

#include <cstdio>
#include <cstring>

#include "kelmnapi/component.h"
#include "kelmnapi/update_script.h"
#include "logfile/module_log.h"
#include "logfile/shown_text.h"
#include "win/owner.h"

namespace kelmnapi {
namespace {

constinit UpdateScript g_updateNow("UpdateNow");
constinit UpdateScript g_updateNowEx("UpdateNowEx");

/// Appends `<function>;<result>;<exit code, or - for none>;<command>` to the log. A call counts although it could not
/// be logged: the component has run.
void Record(const char* function, const char* command, const Outcome& outcome) noexcept {
  char exitCode[16] = "-", line[logfile::ShownText::kLongest + 64];
  if (outcome.exitCode) std::snprintf(exitCode, sizeof exitCode, "%ld", static_cast<long>(*outcome.exitCode));
  std::snprintf(line, sizeof line, "%s;%d;%s;%s", function, outcome.result, exitCode,
                logfile::ShownText(command).Text());
  logfile::LogBesideModule(line);
}

/// The shape of every export: `body` gives the outcome, of which the exit code goes to the caller.
template <typename Body>
int Answer(const char* function, const char* command, std::int32_t* exitCode, Body body) noexcept {
  const win::KeptLastError kept;
  Outcome outcome{kFailure, {}};
  try {
    outcome = body();
  } catch (...) {
  }
  Record(function, command, outcome);
  if (outcome.exitCode) *exitCode = *outcome.exitCode;
  return outcome.result;
}

Outcome RunCommand(const char* command, std::uint32_t second) {
  const auto parts = ParseCommand({command, strnlen(command, kLongestCommand + 1)});
  return parts ? RunComponent(*parts, second) : Outcome{kBadCommand, {}};
}

/// Answers with the script, else runs `command` of the update component.
int Update(UpdateScript& script, const char* command, bool forceContinue, std::int32_t* exitCode) noexcept {
  return Answer(script.Function(), command, exitCode, [&]() -> Outcome {
    if (exitCode == nullptr) return {kBadArgument, {}};
    const auto scripted = script.NextAnswer();
    return scripted ? *scripted : RunCommand(command, forceContinue);
  });
}

constexpr const char* ContinueArgument(std::int32_t forceContinue) noexcept {
  return forceContinue ? " -ForceContinue" : "";
}

int Refuse(const char* function) noexcept {
  return Answer(function, "", nullptr, [] { return Outcome{kNotSupported, {}}; });
}

}  // namespace
}  // namespace kelmnapi

using namespace kelmnapi;

extern "C" {

int KE_SIBLING_CALL Run(const char* command, int32_t* exitCode) {
  return Answer(__func__, command, exitCode, [&]() -> Outcome {
    return command && exitCode ? RunCommand(command, 0) : Outcome{kBadArgument, {}};
  });
}

int KE_SIBLING_CALL UpdateNow(int32_t forceContinue, int32_t* exitCode) {
  char command[64];
  std::snprintf(command, sizeof command, "KELUPD -UpdateNow%s", ContinueArgument(forceContinue));
  return Update(g_updateNow, command, forceContinue, exitCode);
}

int KE_SIBLING_CALL UpdateNowEx(int32_t forceContinue, int32_t* exitCode, uint32_t first, uint32_t second) {
  char command[96];
  std::snprintf(command, sizeof command, "KELUPD -UpdateNow%s -Values:%lu,%lu", ContinueArgument(forceContinue),
                static_cast<unsigned long>(first), static_cast<unsigned long>(second));
  return Update(g_updateNowEx, command, forceContinue, exitCode);
}

int KE_SIBLING_CALL DeliveryMsg(void) { return Refuse(__func__); }
int KE_SIBLING_CALL ContinueInstall(void) { return Refuse(__func__); }
int KE_SIBLING_CALL GetInstallState(void) { return Refuse(__func__); }

}  // extern "C"
