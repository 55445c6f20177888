#include "plugin/plugin.h"

#include <atomic>
#include <cstdio>

#include "KEPlugin.h"
#include "logfile/module_log.h"
#include "logfile/shown_text.h"
#include "settings/own_settings.h"

namespace plugin {
namespace {

constexpr std::int32_t kUsualMode = 6;

// How many initialisations have not been answered by an end.
constinit std::atomic<std::uint32_t> g_initialised = 0;

Result Admit(std::int32_t mode) noexcept {
  const auto accepted = settings::ReadNumber("PLUGIN", "Mode", kUsualMode);
  if (!accepted) return kBadSettings;
  if (mode != *accepted) return kRefusedMode;
  ++g_initialised;
  return kSuccess;
}

bool Leave() noexcept {
  std::uint32_t count = g_initialised;
  while (count > 0) {
    if (g_initialised.compare_exchange_weak(count, count - 1)) return true;
  }
  return false;
}

Result Judge(std::int32_t code, const char* value) noexcept {
  if (!IsInitialised()) return kNotInitialised;
  if (value == nullptr) return kBadArgument;
  return code >= KE_INFO_USER && code <= KE_INFO_DEVICE_ID ? kSuccess : kUnknownInfo;
}

}  // namespace

Result Record(const char* function, Result result, const char* detail) noexcept {
  char line[logfile::ShownText::kLongest + 96];
  std::snprintf(line, sizeof line, "%s;%d;%s", function, static_cast<int>(result), detail);
  return logfile::LogBesideModule(line) || result != kSuccess ? result : kNotLogged;
}

Result Initialise(std::int32_t mode) noexcept {
  char detail[16];
  std::snprintf(detail, sizeof detail, "%ld", static_cast<long>(mode));
  const Result admitted = Admit(mode), result = Record("KE_Initialize", admitted, detail);
  if (admitted == kSuccess && result != kSuccess) Leave();  // nobody ends what was not told to have begun
  return result;
}

Result Finalise() noexcept { return Record("KE_Finalize", Leave() ? kSuccess : kNotInitialised, ""); }

bool IsInitialised() noexcept { return g_initialised > 0; }

Result SetInfo(const char* function, std::int32_t code, const char* value) noexcept {
  const Result result = Judge(code, value);
  // What was not accepted is not shown either: it may be a password under another code.
  const bool shown = result == kSuccess && code != KE_INFO_PASSWORD;
  char detail[logfile::ShownText::kLongest + 28];
  std::snprintf(detail, sizeof detail, "%ld;%s", static_cast<long>(code),
                shown ? logfile::ShownText(value).Text() : "***");
  return Record(function, result, detail);
}

}  // namespace plugin
