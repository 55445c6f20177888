// The exports of proxy and internet configuration.
#include "KELUtils.h"
#include "frame/export_call.h"
#include "frame/module.h"
#include "frame/text.h"
#include "services/proxy.h"

using frame::Export;
using frame::ExportCall;
using frame::IsBlank;
using frame::kDetail;
using frame::Shown;

KE_RESULT KE_API KE_GetConfiguratedProxy(KE_PROXY* proxy) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (proxy == nullptr) return KE_MISSING_ARGUMENT;
    return services::GetConfiguredProxy(self.name, *proxy);
  });
}

KE_RESULT KE_API KE_SetAgentProxyInfo(const char* server, const char* port, const char* user, const char* password) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    Trace(kDetail, self.name, "Parameter Server:   [%s]", Shown(server));
    Trace(kDetail, self.name, "Parameter Port:     [%s]", Shown(port));
    // User and password arrive enciphered and are traced so.
    Trace(kDetail, self.name, "Parameter User:     [%s]", Shown(user));
    Trace(kDetail, self.name, "Parameter Password: [%s]", Shown(password));
    if (user == nullptr || password == nullptr || IsBlank(server) || port == nullptr) return KE_MISSING_ARGUMENT;
    if (frame::GetModuleDirectory().empty()) return KE_NO_MODULE_DIRECTORY;
    return services::SetAgentProxy(self.name, {server, port, user, password});
  });
}

KE_RESULT KE_API KE_SetStaticProxyInfo(const char* host, const char* ips) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    Trace(kDetail, self.name, "Parameter pszHost:   [%s]", Shown(host));
    Trace(kDetail, self.name, "Parameter pszIPs:    [%s]", Shown(ips));
    return services::SetStaticProxy(self.name, host, ips);
  });
}

KE_RESULT KE_API KE_GetInetConfig(KE_PROXY* proxy, uint32_t size) {
  return ExportCall("KE_INSTALL_GetInetConfig", [&](Export& self) -> KE_RESULT {
    if (proxy == nullptr) return KE_MISSING_ARGUMENT;
    return services::GetInternetProxy(self.name, *proxy, size);
  });
}
