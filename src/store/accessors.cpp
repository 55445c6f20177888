#include "store/accessors.h"

#include <cstddef>
#include <cstdio>
#include <string>

#include "store/ini_store.h"
#include "store/integra_store.h"
#include "store/setting_codec.h"
#include "store/store_lock.h"
#include "text/text.h"
#include "trace/trace.h"

namespace store {

namespace {

using trace::Export;
using trace::ExportCall;

// Restores the store from the backup and then from the start copy, until it has the value of a row, and copies that.
KE_RESULT CopyRestored(const TextGetter& row, const Export& self, char* buffer, std::int32_t size) {
  const StoreOrCode backup = RestoreIntegraDat();
  if (backup) {
    if (const auto value = FindValue(*backup, row.section, row.key)) return CopyOut(*value, buffer, size);
  }
  const bool hadBackup = static_cast<bool>(backup);
  const StoreOrCode start = RestoreIntegraDatEx();
  if (!start && !hadBackup) Trace(trace::kDetail, self.name, "Could not open Restored File Integra.dat");
  const auto value = start ? FindValue(*start, row.section, row.key) : std::nullopt;
  return value ? CopyOut(*value, buffer, size) : KE_RESULT{KE_STORE_UNUSABLE};
}

// Copies the value of a row. A store without it is restored from the copies, one after the other.
KE_RESULT ReadOrRestore(const TextGetter& row, const Export& self, char* buffer, std::int32_t size) {
  bool missing = false;
  const auto copy = [&](const IniStore& store) -> KE_RESULT {
    const auto value = FindValue(store, row.section, row.key);
    missing = !value;
    return value ? CopyOut(*value, buffer, size) : KE_RESULT{KE_STORE_UNUSABLE};
  };
  const KE_RESULT result = ReadStore(copy);
  if (!missing) return result;
  // Getters wait for the store's lock only here. Another process may have set the value meanwhile.
  return UpdateStore([&](const IniStore& store) {
    const KE_RESULT again = copy(store);
    return missing ? CopyRestored(row, self, buffer, size) : again;
  });
}

KE_RESULT ReadText(const TextGetter& row, const Export& self, char* buffer, std::int32_t size) {
  if (row.read == TextRead::kRequired && size <= 0) return KE_BUFFER_TOO_SMALL;
  if (row.read == TextRead::kRestored) return ReadOrRestore(row, self, buffer, size);
  return ReadStore([&](const IniStore& store) -> KE_RESULT {
    const auto value = FindValue(store, row.section, row.key);
    if (value || row.read != TextRead::kRequired) return CopyOut(value.value_or(""), buffer, size);
    buffer[0] = '\0';
    return KE_STORE_UNUSABLE;
  });
}

// A decimal number of the store; 0 when it is missing.
std::int32_t NumberOf(const IniStore& store, const char* section, const char* key) {
  const auto text = FindValue(store, section, key);
  return text ? text::DecimalFromText(std::string(*text).c_str()) : 0;
}

// Reads the certificate and traces whether that worked. On the way the certificate's getter restores a damaged store.
void CheckIntegrity() {
  char certificate[512] = {};
  const bool present = GetText(RowOf(kTextGetters, "KE_GetCertificate"), certificate, 510) == KE_SUCCESS;
  Trace(trace::kDetail, __func__, present ? "CheckIntegrity ok" : "CheckIntegrity failed");
}

// Runs `work` to change the store, after the integrity check.
template <typename Work>
KE_RESULT CheckAndUpdate(Work work) {
  const StoreLock lock;  // one wait for both
  CheckIntegrity();
  return UpdateStore(work);
}

bool IsRefused(const char* text, TextRefused refused) noexcept {
  return refused == TextRefused::kNullOrEmpty ? text::IsBlank(text) : refused == TextRefused::kNull && text == nullptr;
}

// Integration date: characters, with the terminating zero; a longer date is cut.
constexpr std::size_t kDateSize = 40;
constexpr std::int64_t kFirstYear = 1900;

// Empties a value and writes the store. KE_SUCCESS, with nothing written, when the value is missing.
KE_RESULT ClearValue(IniStore& store, const char* section, const char* key) {
  return FindValue(store, section, key) ? SetAndSave(store, section, key, {}) : KE_RESULT{KE_SUCCESS};
}

static_assert(sizeof(KE_TIME) == 24 && offsetof(KE_TIME, seconds) == 0 && offsetof(KE_TIME, minutes) == 4 &&
              offsetof(KE_TIME, hours) == 8 && offsetof(KE_TIME, day) == 12 && offsetof(KE_TIME, month) == 16 &&
              offsetof(KE_TIME, year) == 20);

}  // namespace

std::optional<std::string_view> FindValue(const IniStore& store, const char* section, const char* key) {
  const IniEntry* entry = LookupEntry(store, section, key);
  if (entry == nullptr || entry->value.empty()) return std::nullopt;
  return entry->value;
}

KE_RESULT SetAndSave(IniStore& store, const char* section, const char* key, std::string_view value) {
  if (!SetValue(store, section, key, value)) return KE_NOT_CREATED;
  return WriteIntegraDat();
}

KE_RESULT CopyOut(std::string_view value, char* buffer, std::int32_t size) noexcept {
  if (size <= 0 || static_cast<std::size_t>(size) <= value.size()) return KE_BUFFER_TOO_SMALL;
  text::CopyCut(value, buffer, static_cast<std::size_t>(size));
  return KE_SUCCESS;
}

KE_RESULT GetText(const TextGetter& row, char* buffer, std::int32_t size) noexcept {
  return ExportCall(row.traceName, [&](Export& self) -> KE_RESULT {
    if (buffer == nullptr) return KE_MISSING_ARGUMENT;
    if (row.read == TextRead::kOptionalSized && size <= 0) return KE_MISSING_ARGUMENT;
    return ReadText(row, self, buffer, size);
  });
}

KE_RESULT SetText(const TextSetter& row, const char* text) noexcept {
  return ExportCall(row.exportName.data(), [&](Export&) { return CheckAndSet(row, text); });
}

KE_RESULT CheckAndSet(const TextSetter& row, const char* text) {
  if (IsRefused(text, row.refused)) return KE_MISSING_ARGUMENT;
  return CheckAndSet(row.section, row.key, text ? text : "");
}

KE_RESULT CheckAndSet(const char* section, const char* key, const char* text) {
  return CheckAndUpdate([&](IniStore& store) { return SetAndSave(store, section, key, text); });
}

KE_RESULT GetNumber(const char* exportName, const char* section, const char* key, std::int32_t* value) noexcept {
  return ExportCall(exportName, [&](Export&) -> KE_RESULT {
    if (value == nullptr) return KE_MISSING_ARGUMENT;
    return ReadStore([&](const IniStore& store) -> KE_RESULT {
      *value = NumberOf(store, section, key);
      return KE_SUCCESS;
    });
  });
}

KE_RESULT GetInstallState(std::int32_t* state) noexcept {
  return GetNumber("KE_GetInstallState", "INSTALL", "State", state);
}

KE_RESULT SetInstallState(const std::int32_t* state, bool onlyForward) noexcept {
  return ExportCall("KE_SetInstallState", [&](Export&) -> KE_RESULT {
    if (state == nullptr) return KE_MISSING_ARGUMENT;
    return CheckAndUpdate([&](IniStore& store) -> KE_RESULT {
      if (onlyForward && *state <= NumberOf(store, "INSTALL", "State")) return KE_SUCCESS;
      return SetAndSave(store, "INSTALL", "State", std::to_string(*state));
    });
  });
}

KE_RESULT IsIntegrated(std::int32_t* integrated) noexcept {
  return ExportCall("KE_IsIntegrated", [&](Export&) -> KE_RESULT {
    if (integrated == nullptr) return KE_MISSING_ARGUMENT;
    return ReadStore([&](const IniStore& store) -> KE_RESULT {
      *integrated = FindValue(store, "INTEGRATION", "Date") && FindValue(store, "INTEGRATION", "DEVICEID") ? 1 : 0;
      return KE_SUCCESS;
    });
  });
}

bool IsComputerIntegrated() noexcept {
  std::int32_t integrated = 0;
  return IsIntegrated(&integrated) == KE_SUCCESS && integrated != 0;
}

KE_RESULT Integrate(const KE_TIME& time) {
  char date[kDateSize] = {};
  // 64 bits: fields out of their range must not overflow.
  snprintf(date, sizeof date, "%.4lli-%.2lli-%.2i %.2i:%.2i:%.2i", static_cast<long long>(kFirstYear + time.year),
           static_cast<long long>(std::int64_t{time.month} + 1), static_cast<int>(time.day),
           static_cast<int>(time.hours), static_cast<int>(time.minutes), static_cast<int>(time.seconds));
  return CheckAndSet("INTEGRATION", "Date", date);
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
    Trace(trace::kDetail, function, "Could not open Restored File Integra.dat");
    return KE_STORE_UNUSABLE;
  });
}

}  // namespace store
