#include "services/immediate_update.h"

#include "frame/component.h"
#include "frame/trace.h"
#include "frame/waiting.h"

namespace services {
namespace {

using frame::kDetail;
using frame::Launcher;

constexpr DWORD kPauseMilliseconds = 20000;
constexpr std::int32_t kMoreToDo = 1559;  // the exit code that asks for another repetition

struct UpdateFailure {
  std::int32_t exitCode;
  KE_RESULT result;
};

constexpr UpdateFailure kFailures[] = {
    {1566, KE_UPDATE_FAILED_1566}, {1558, KE_UPDATE_FAILED_1558}, {1565, KE_UPDATE_FAILED_1565},
    {5000, KE_UPDATE_FAILED_5000}, {1567, KE_UPDATE_FAILED_1567},
};

KE_RESULT ResultOf(std::int32_t exitCode) noexcept {
  for (const UpdateFailure& row : kFailures) {
    if (row.exitCode == exitCode) return row.result;
  }
  return static_cast<KE_RESULT>(exitCode);
}

/// The launcher's answer to one call.
struct Answer {
  int returned = 0;
  std::int32_t exitCode = 0;

  bool Ended(std::int32_t with) const noexcept { return returned == 0 && exitCode == with; }
};

// Calls `update(forceContinue, exitCode)` until there is no more to do; `last` becomes the answer that ended it, the
// first one when nothing was repeated. A call that tells no exit code leaves that of the one before.
template <typename Update>
Answer UpdateRepeatedly(Update update, Answer& last) {
  last = {};
  const auto call = [&](std::int32_t forceContinue) { last.returned = update(forceContinue, &last.exitCode); };
  call(0);
  const Answer first = last;
  if (!first.Ended(0)) return first;
  do {
    frame::Pause(kPauseMilliseconds);
    call(1);
  } while (last.Ended(kMoreToDo));
  return first;
}

}  // namespace

KE_RESULT UpdateAtOnce(const char* function) {
  const frame::LauncherScope launcher(function);
  if (!launcher) return KE_LAUNCHER_NOT_LOADED;
  Answer last{};
  const Answer first = UpdateRepeatedly(
      [](std::int32_t forceContinue, std::int32_t* exitCode) { return Launcher().UpdateNow(forceContinue, exitCode); },
      last);
  return static_cast<KE_RESULT>(first.returned);
}

KE_RESULT UpdateAtOnceEx(const char* function, std::uint32_t firstValue, std::uint32_t secondValue) {
  const frame::LauncherScope launcher(function);
  if (!launcher) return KE_LAUNCHER_NOT_LOADED;
  Answer last{};
  const Answer first = UpdateRepeatedly(
      [&](std::int32_t forceContinue, std::int32_t* exitCode) {
        Trace(kDetail, function, "Ready To launch KELMNAPI_UpdateNowEx with ForceContinue value: %d",
              static_cast<int>(forceContinue));
        const int returned = Launcher().UpdateNowEx(forceContinue, exitCode, firstValue, secondValue);
        Trace(kDetail, function, "Back from KELMNAPI_UpdateNowEx with value: %i. Kes_UpdateNowEx returned value: %d",
              returned, static_cast<int>(*exitCode));
        return returned;
      },
      last);
  if (first.Ended(0)) return ResultOf(last.exitCode);
  return first.exitCode > 0 ? ResultOf(first.exitCode) : static_cast<KE_RESULT>(first.returned);
}

}  // namespace services
