// The exports of the integration store. Most are a row of accessor_table.h.

#include <cstdint>
#include <string>

#include "KELUtils.h"
#include "agent/agent.h"
#include "registration/texts.h"
#include "store/accessor_table.h"
#include "store/accessors.h"
#include "text/text.h"
#include "trace/trace.h"

using text::IsBlank;
using trace::Export;
using trace::ExportCall;

namespace {

// The row of an export, found by its name while compiling.
template <typename Row, const auto& kTable>
struct RowName {
  // cppcheck-suppress noExplicitConstructor ; a conversion: the exports pass their names
  consteval RowName(const char* name) : row(store::RowOf(kTable, name)) {}
  const Row& row;
};
using Getter = RowName<store::TextGetter, store::kTextGetters>;
using Setter = RowName<store::TextSetter, store::kTextSetters>;

KE_RESULT Get(Getter getter, char* buffer, int32_t size) noexcept { return store::GetText(getter.row, buffer, size); }

KE_RESULT Set(Setter setter, const char* text) noexcept { return store::SetText(setter.row, text); }

// Sets a text and, after a successful write, notifies the plug-ins of it: without a lock, for a plug-in may call back.
KE_RESULT Set(Setter setter, const char* text, KE_RESULT (*notify)(const char*)) noexcept {
  return ExportCall(setter.row.exportName.data(), [&](Export& self) -> KE_RESULT {
    const KE_RESULT result = store::CheckAndSet(setter.row, text);
    if (result != KE_SUCCESS) return result;
    const KE_RESULT notified = trace::RunStep([&] { return notify(text); });
    Trace(trace::kDetail, self.name, "Plug-ins notified. Return code (%i)", static_cast<int>(notified));
    return KE_SUCCESS;
  });
}

}  // namespace

// Texts

KE_RESULT KE_API KE_GetAgentID(char* buffer, int32_t size) { return Get("KE_GetAgentID", buffer, size); }
KE_RESULT KE_API KE_GetCustomerId(char* buffer, int32_t size) { return Get("KE_GetCustomerId", buffer, size); }
KE_RESULT KE_API KE_GetCertificate(char* buffer, int32_t size) { return Get("KE_GetCertificate", buffer, size); }
KE_RESULT KE_API KE_GetDeviceID(char* buffer, int32_t size) { return Get("KE_GetDeviceID", buffer, size); }
KE_RESULT KE_API KE_GetUserRCM(char* buffer, int32_t size) { return Get("KE_GetUserRCM", buffer, size); }
KE_RESULT KE_API KE_GetPasswordRCM(char* buffer, int32_t size) { return Get("KE_GetPasswordRCM", buffer, size); }
KE_RESULT KE_API KE_GetAgentVersion(char* buffer, int32_t size) { return Get("KE_GetAgentVersion", buffer, size); }
KE_RESULT KE_API KE_GetServerDate(char* buffer, int32_t size) { return Get("KE_GetServerDate", buffer, size); }
KE_RESULT KE_API KE_GetContainer(char* buffer, int32_t size) { return Get("KE_GetContainer", buffer, size); }
KE_RESULT KE_API KE_GetLastErrorParam(char* buffer, int32_t size) { return Get("KE_GetLastErrorParam", buffer, size); }

KE_RESULT KE_API KE_SetAgentID(const char* text) { return Set("KE_SetAgentID", text); }
KE_RESULT KE_API KE_SetAgentVersion(const char* text) { return Set("KE_SetAgentVersion", text); }
KE_RESULT KE_API KE_SetServerDate(const char* text) { return Set("KE_SetServerDate", text); }
KE_RESULT KE_API KE_SetContainer(const char* text) { return Set("KE_SetContainer", text); }
KE_RESULT KE_API KE_SetCustomerId(const char* text) { return Set("KE_SetCustomerId", text); }
KE_RESULT KE_API KE_SetCertificate(const char* text) { return Set("KE_SetCertificate", text); }
KE_RESULT KE_API KE_SetLastErrorParam(const char* text) { return Set("KE_SetLastErrorParam", text); }

KE_RESULT KE_API KE_SetDeviceID(const char* text) { return Set("KE_SetDeviceID", text, agent::NotificarDeviceID); }
KE_RESULT KE_API KE_SetUserRCM(const char* text) { return Set("KE_SetUserRCM", text, agent::NotificarUserRCM); }
KE_RESULT KE_API KE_SetPasswordRCM(const char* text) {
  return Set("KE_SetPasswordRCM", text, agent::NotificarPasswordRCM);
}

KE_RESULT KE_API KE_SetPropertyInIntegra(const char* key, const char* text) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    if (IsBlank(key) || IsBlank(text)) return KE_MISSING_ARGUMENT;
    return store::CheckAndSet("INTEGRATION", key, text);
  });
}

// Numbers

KE_RESULT KE_API KE_GetInstallState(int32_t* value) { return store::GetInstallState(value); }

KE_RESULT KE_API KE_GetLastInstallError(int32_t* value) {
  return store::GetNumber(__func__, "INSTALL", "LastError", value);
}

KE_RESULT KE_API KE_SetLastInstallError(const int32_t* error) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    if (error == nullptr) return KE_MISSING_ARGUMENT;
    return store::CheckAndSet("INSTALL", "LastError", std::to_string(*error).c_str());
  });
}

KE_RESULT KE_API KE_SetInstallState(const int32_t* state, int32_t onlyForward) {
  return store::SetInstallState(state, onlyForward != 0);
}

// Yes or no

KE_RESULT KE_API KE_IsInstallComplete(int32_t* value) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    if (value == nullptr) return KE_MISSING_ARGUMENT;
    *value = 0;
    int32_t state = 0;
    const KE_RESULT result = KE_GetInstallState(&state);
    if (result == KE_SUCCESS && state >= registration::kInstallComplete) *value = 1;
    return result;
  });
}

KE_RESULT KE_API KE_IsIntegrated(int32_t* value) { return store::IsIntegrated(value); }

// Integration

KE_RESULT KE_API KE_Integrate(const KE_TIME* time) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    if (time == nullptr) return KE_MISSING_ARGUMENT;
    return store::Integrate(*time);
  });
}

KE_RESULT KE_API KE_DeIntegrate(void) {
  return ExportCall(__func__, [](Export&) { return store::DeIntegrate(); });
}
