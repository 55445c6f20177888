// The exports of server addresses, proxies and the start of an upgrade.

#include "KELUtils.h"
#include "agent/agent.h"
#include "text/text.h"
#include "trace/trace.h"
#include "upgrade/upgrade.h"
#include "win/module.h"

using text::IsBlank;
using text::OrNullText;
using trace::Export;
using trace::ExportCall;
using trace::kDetail;

// The only export without a trace: it does not load the trace library.
KE_RESULT KE_API KE_SetURLSecureServer(const char* server) {
  try {
    return upgrade::SetIntegrationServer(server);
  } catch (...) {
    return KE_EXCEPTION;
  }
}

KE_RESULT KE_API KE_SetURLServer(const char* server) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (server == nullptr) return KE_MISSING_ARGUMENT;
    return agent::SetAgentServer(self.name, server);
  });
}

KE_RESULT KE_API KE_UpgradeStart(const char* installDir) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    if (IsBlank(installDir)) return KE_MISSING_ARGUMENT;
    return upgrade::StartUpgrade(installDir);
  });
}

// Proxies

KE_RESULT KE_API KE_GetConfiguratedProxy(KE_PROXY* proxy) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (proxy == nullptr) return KE_MISSING_ARGUMENT;
    return agent::GetConfiguredProxy(self.name, *proxy);
  });
}

KE_RESULT KE_API KE_SetAgentProxyInfo(const char* server, const char* port, const char* user, const char* password) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    Trace(kDetail, self.name, "Parameter Server:   [%s]", OrNullText(server));
    Trace(kDetail, self.name, "Parameter Port:     [%s]", OrNullText(port));
    // Both are encrypted.
    Trace(kDetail, self.name, "Parameter User:     [%s]", OrNullText(user));
    Trace(kDetail, self.name, "Parameter Password: [%s]", OrNullText(password));
    if (user == nullptr || password == nullptr || IsBlank(server) || port == nullptr) return KE_MISSING_ARGUMENT;
    if (!win::FolderOf("")) return KE_NO_MODULE_DIRECTORY;
    return agent::SetAgentProxy(self.name, {server, port, user, password});
  });
}

KE_RESULT KE_API KE_SetStaticProxyInfo(const char* host, const char* ips) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    Trace(kDetail, self.name, "Parameter pszHost:   [%s]", OrNullText(host));
    Trace(kDetail, self.name, "Parameter pszIPs:    [%s]", OrNullText(ips));
    return agent::SetStaticProxy(self.name, host, ips);
  });
}

KE_RESULT KE_API KE_GetInetConfig(KE_PROXY* proxy, uint32_t size) {
  return ExportCall("KE_INSTALL_GetInetConfig", [&](Export& self) -> KE_RESULT {
    if (proxy == nullptr) return KE_MISSING_ARGUMENT;
    return agent::GetInternetProxy(self.name, *proxy, size);
  });
}
