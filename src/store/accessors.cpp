#include "store/accessors.h"

#include <string>

#include "frame/decimal.h"
#include "frame/export_call.h"
#include "frame/text.h"
#include "services/plugin_notification.h"
#include "store/ini_store.h"
#include "store/integra_store.h"
#include "store/store_lock.h"

namespace store {
namespace {

using frame::Export;
using frame::ExportCall;

// Restores the store from the backup and then from the start copy, until it has the value of a row, and copies that.
KE_RESULT CopyRestored(const TextGetter& row, const Export& self, char* buffer, std::int32_t size) {
  const StoreOrCode backup = RestoreIntegraDat();
  if (backup) {
    if (const auto value = FindValue(*backup, row.section, row.key)) return CopyOut(*value, buffer, size);
  }
  const bool hadBackup = static_cast<bool>(backup);
  const StoreOrCode start = RestoreIntegraDatEx();
  if (!start && !hadBackup) Trace(frame::kDetail, self.name, "Could not open Restored File Integra.dat");
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
  // Only now the store's lock is waited for; another process may have set the value meanwhile.
  return UpdateStore([&](const IniStore& store) {
    const KE_RESULT again = copy(store);
    return missing ? CopyRestored(row, self, buffer, size) : again;
  });
}

// The answer of a getter that finds no value.
KE_RESULT AnswerMissing(TextRead read, char* buffer, std::int32_t size) noexcept {
  switch (read) {
    case TextRead::kRestored:
      return KE_STORE_UNUSABLE;
    case TextRead::kRequired:
      buffer[0] = '\0';
      return KE_STORE_UNUSABLE;
    case TextRead::kOptional:
    case TextRead::kOptionalSized:
      return CopyOut({}, buffer, size);
  }
  return KE_EXCEPTION;
}

KE_RESULT ReadText(const TextGetter& row, const Export& self, char* buffer, std::int32_t size) {
  if (row.read == TextRead::kRequired && size <= 0) return KE_BUFFER_TOO_SMALL;
  if (row.read == TextRead::kRestored) return ReadOrRestore(row, self, buffer, size);
  return ReadStore([&](const IniStore& store) {
    const auto value = FindValue(store, row.section, row.key);
    return value ? CopyOut(*value, buffer, size) : AnswerMissing(row.read, buffer, size);
  });
}

// A decimal number of the store; 0 when it is missing.
std::int32_t NumberOf(const IniStore& store, const char* section, const char* key) {
  const auto text = FindValue(store, section, key);
  return text ? frame::DecimalFromText(std::string(*text).c_str()) : 0;
}

// Reads the certificate and traces whether that worked. On the way the certificate's getter restores a damaged store.
void CheckIntegrity() {
  char certificate[512] = {};
  const bool present = GetText(RowOf(kTextGetters, "KE_GetCertificate"), certificate, 510) == KE_SUCCESS;
  Trace(frame::kDetail, __func__, present ? "CheckIntegrity ok" : "CheckIntegrity failed");
}

// Runs `work` to change the store, after the integrity check.
template <typename Work>
KE_RESULT CheckAndUpdate(Work work) {
  const StoreLock lock;  // one wait for both
  CheckIntegrity();
  return UpdateStore(work);
}

bool IsRefused(const char* text, TextRefused refused) noexcept {
  switch (refused) {
    case TextRefused::kNullOrEmpty:
      return frame::IsBlank(text);
    case TextRefused::kNull:
      return text == nullptr;
    case TextRefused::kNone:
      return false;
  }
  return true;
}

// Tells the plug-ins about a changed value.
KE_RESULT TellPlugins(PluginValue value, const char* text) {
  switch (value) {
    case PluginValue::kUser:
      return services::NotificarUserRCM(text);
    case PluginValue::kPassword:
      return services::NotificarPasswordRCM(text);
    case PluginValue::kDeviceId:
      return services::NotificarDeviceID(text);
    case PluginValue::kNone:
      break;
  }
  return KE_SUCCESS;
}

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
  frame::CopyCut(value, buffer, static_cast<std::size_t>(size));
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
  return ExportCall(row.exportName.data(), [&](Export& self) -> KE_RESULT {
    if (IsRefused(text, row.refused)) return KE_MISSING_ARGUMENT;
    const KE_RESULT result = StoreText(row.section, row.key, text ? text : "");
    if (result == KE_SUCCESS && row.told != PluginValue::kNone) {
      const KE_RESULT told =
          frame::RunStep([&] { return TellPlugins(row.told, text); });  // without the lock: a plug-in may call back
      Trace(frame::kDetail, self.name, "Plug-ins notified. Return code (%i)", static_cast<int>(told));
    }
    return result;
  });
}

KE_RESULT StoreText(const char* section, const char* key, const char* text) {
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

KE_RESULT StoreInstallState(std::int32_t state, bool onlyForward) {
  return CheckAndUpdate([&](IniStore& store) -> KE_RESULT {
    if (onlyForward && state <= NumberOf(store, "INSTALL", "State")) return KE_SUCCESS;
    return SetAndSave(store, "INSTALL", "State", std::to_string(state));
  });
}

KE_RESULT ReadIntegrated(std::int32_t* integrated) {
  return ReadStore([&](const IniStore& store) -> KE_RESULT {
    *integrated = FindValue(store, "INTEGRATION", "Date") && FindValue(store, "INTEGRATION", "DEVICEID") ? 1 : 0;
    return KE_SUCCESS;
  });
}

}  // namespace store
