#include "kelagapi/call_log.h"

#include <cstdio>

#include "logfile/module_log.h"

namespace kelagapi {

Result Logged(const char* function, Result result) noexcept {
  char text[128];
  std::snprintf(text, sizeof text, "%s;%lu", function, static_cast<unsigned long>(result));
  logfile::LogBesideModule(text);
  return result;
}

Result Logged(const char* function, RecordKey key, std::uint32_t size, Result result) noexcept {
  char call[96];
  std::snprintf(call, sizeof call, "%s;%lu;%lu;%lu", function, static_cast<unsigned long>(key.cls),
                static_cast<unsigned long>(key.item), static_cast<unsigned long>(size));
  return Logged(call, result);
}

}  // namespace kelagapi
