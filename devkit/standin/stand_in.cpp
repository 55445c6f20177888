#include "standin/stand_in.h"

#include <windows.h>

#include <cstdint>
#include <cstdio>

#include "logfile/module_log.h"
#include "logfile/shown_text.h"
#include "settings/own_settings.h"
#include "standin/results.h"

namespace standin {
namespace {

constexpr std::int32_t kLongestDelayMilliseconds = 10 * 60 * 1000;

bool Note(int exitCode) noexcept {
  char line[logfile::ShownText::kLongest + 32];
  std::snprintf(line, sizeof line, "%d;%s", exitCode, logfile::ShownText(GetCommandLineA()).Text());
  return logfile::LogBesideModule(line);
}

}  // namespace

int NoteAndWait() noexcept {
  const auto wanted = settings::ReadNumber("EXIT", "Code", kSuccess);
  const auto delay = settings::ReadNumber("EXIT", "DelayMilliseconds", 0, 0, kLongestDelayMilliseconds);
  const int exitCode = wanted && delay ? *wanted : kBadSettings;
  if (!Note(exitCode)) return kNotLogged;
  Sleep(static_cast<DWORD>(delay.value_or(0)));
  return exitCode;
}

}  // namespace standin
