#include "store/accessors.h"

#include <string>

#include "frame/decimal.h"
#include "frame/export_call.h"
#include "frame/text.h"
#include "services/plugin_notification.h"
#include "store/ini_store.h"
#include "store/integra_store.h"

namespace store {
namespace {

using frame::Export;
using frame::ExportCall;

// The value of a row; when it is missing, that of the backup and then of the start copy, which thereby become the live
// store. None when no copy holds one.
std::optional<std::string_view> FindOrRestore(const TextGetter& row, const Export& self) {
  if (const auto value = FindValue(row.section, row.key)) return value;
  const bool fromBackup = RestoreIntegraDat() == KE_SUCCESS;
  if (fromBackup) {
    if (const auto value = FindValue(row.section, row.key)) return value;
  }
  if (RestoreIntegraDatEx() != KE_SUCCESS) {
    if (!fromBackup) Trace(frame::kDetail, self.name, "Could not open Restored File Integra.dat");
    return std::nullopt;
  }
  return FindValue(row.section, row.key);
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
  return WithCurrentStore([&]() -> KE_RESULT {
    const auto value = row.read == TextRead::kRestored ? FindOrRestore(row, self) : FindValue(row.section, row.key);
    return value ? CopyOut(*value, buffer, size) : AnswerMissing(row.read, buffer, size);
  });
}

// A decimal number of the current store; 0 when it is missing.
std::int32_t NumberOf(const char* section, const char* key) {
  const auto text = FindValue(section, key);
  return text ? frame::DecimalFromText(std::string(*text).c_str()) : 0;
}

// Changes a value of the current store, creating it when it is missing, and writes the store.
KE_RESULT ChangeValue(const char* section, const char* key, std::string_view value) {
  if (!SetValue(*IntegraStore, section, key, value)) return KE_NOT_CREATED;
  return WriteIntegraDat();
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

std::optional<std::string_view> FindValue(const char* section, const char* key) {
  const IniEntry* entry = LookupEntry(*IntegraStore, section, key, false);
  if (entry == nullptr || entry->value.empty()) return std::nullopt;
  return entry->value;
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
  CheckIntegrity();
  return ChangeCurrentStore([&] { return ChangeValue(section, key, text); });
}

KE_RESULT GetNumber(const char* exportName, const char* section, const char* key, std::int32_t* value) noexcept {
  return ExportCall(exportName, [&](Export&) -> KE_RESULT {
    if (value == nullptr) return KE_MISSING_ARGUMENT;
    return WithCurrentStore([&]() -> KE_RESULT {
      *value = NumberOf(section, key);
      return KE_SUCCESS;
    });
  });
}

KE_RESULT StoreInstallState(std::int32_t state, bool onlyForward) {
  CheckIntegrity();
  return ChangeCurrentStore([&]() -> KE_RESULT {
    if (onlyForward && state <= NumberOf("INSTALL", "State")) return KE_SUCCESS;
    return ChangeValue("INSTALL", "State", std::to_string(state));
  });
}

KE_RESULT ReadIntegrated(std::int32_t* integrated) {
  return WithCurrentStore([&]() -> KE_RESULT {
    *integrated = FindValue("INTEGRATION", "Date") && FindValue("INTEGRATION", "DEVICEID") ? 1 : 0;
    return KE_SUCCESS;
  });
}

}  // namespace store
