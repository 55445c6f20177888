#include "store/integration.h"

#include <cstddef>
#include <cstdio>

#include "frame/trace.h"
#include "store/accessors.h"
#include "store/ini_store.h"
#include "store/integra_store.h"
#include "store/setting_codec.h"

static_assert(sizeof(KE_TIME) == 24 && offsetof(KE_TIME, seconds) == 0 && offsetof(KE_TIME, minutes) == 4 &&
              offsetof(KE_TIME, hours) == 8 && offsetof(KE_TIME, day) == 12 && offsetof(KE_TIME, month) == 16 &&
              offsetof(KE_TIME, year) == 20);

namespace store {
namespace {

constexpr std::size_t kDateSize = 40;  // characters, with the terminating zero; a longer date is cut
constexpr std::int64_t kFirstYear = 1900;

// Empties a value and writes the store. KE_SUCCESS, with nothing written, when there is none.
KE_RESULT ClearValue(IniStore& store, const char* section, const char* key) {
  return FindValue(store, section, key) ? SetAndSave(store, section, key, {}) : KE_RESULT{KE_SUCCESS};
}

}  // namespace

KE_RESULT Integrate(const KE_TIME& time) {
  char date[kDateSize] = {};
  // 64 bits: fields out of their range must not overflow.
  snprintf(date, sizeof date, "%.4lli-%.2lli-%.2i %.2i:%.2i:%.2i", static_cast<long long>(kFirstYear + time.year),
           static_cast<long long>(std::int64_t{time.month} + 1), static_cast<int>(time.day),
           static_cast<int>(time.hours), static_cast<int>(time.minutes), static_cast<int>(time.seconds));
  return StoreText("INTEGRATION", "Date", date);
}

KE_RESULT DeIntegrate() {
  return UpdateStore([](IniStore& store) -> KE_RESULT {
    const KE_RESULT date = ClearValue(store, "INTEGRATION", "Date");
    const KE_RESULT device = ClearValue(store, "INTEGRATION", "DEVICEID");
    return date != KE_SUCCESS && device != KE_SUCCESS ? KE_STORE_UNUSABLE : KE_SUCCESS;
  });
}

KE_RESULT ReadRemoteControlPassword(char* buffer, std::int32_t size) {
  return ReadStore([&](const IniStore& store) -> KE_RESULT {
    if (const auto stored = FindValue(store, "AGENTRCM", "PASSWORD")) return CopyDeciphered(*stored, buffer, size);
    buffer[0] = '\0';
    return KE_STORE_UNUSABLE;
  });
}

KE_RESULT ReadUninstallPassword(const char* function, PasswordCopy copy, char* buffer, std::int32_t size) {
  return ReadStore([&](const IniStore& store) -> KE_RESULT {
    if (const auto stored = FindValue(store, "UNINSTALL", "PASSWORD")) return copy(*stored, buffer, size);
    Trace(frame::kDetail, function, "Could not open Restored File Integra.dat");
    return KE_STORE_UNUSABLE;
  });
}

}  // namespace store
