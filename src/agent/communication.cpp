#include <cstddef>
#include <cstring>

#include "agent/agent.h"
#include "agent/proxy_records.h"
#include "siblings/modules.h"
#include "siblings/plugins.h"
#include "store/setting_codec.h"
#include "trace/trace.h"
#include "win/owner.h"

namespace agent {

namespace {

using siblings::AgentApi;
using siblings::AgentApiScope;
using trace::kAlways;
using trace::kDetail;

static_assert(sizeof(KE_AGENT_SERVER_RECORD) == 2564 && offsetof(KE_AGENT_SERVER_RECORD, server) == 1028);

constexpr std::size_t kSettingSize = 1024;  // bytes of the longest setting text, with the terminating zero

KE_RESULT OpenAgent(const char* function) {
  const KE_RESULT result = siblings::CheckAgentProxyApi();
  if (result != KE_SUCCESS) siblings::TraceAgentNotLoaded(function, result);
  return result;
}

// KE_SUCCESS for the error 0 of the agent module; else `failure`, and traced.
KE_RESULT Checked(std::uint32_t error, KE_RESULT failure, trace::TraceLevel level, const char* function,
                  const char* action) {
  if (error == 0) return KE_SUCCESS;
  Trace(level, function, "Error %s: [%d]", action, static_cast<int>(error));
  return failure;
}

// Reads the proxy in use into a cleared record.
KE_RESULT ReadProxyInUse(const char* function, KE_AGENT_PROXY_RECORD& record) {
  return Checked(AgentApi().KE_AGAPI_GetProxyConfig(&record, sizeof record), KE_AGENT_READ_FAILED, kDetail, function,
                 "reading the proxy");
}

KE_RESULT ReadStoredProxy(const char* function, KE_AGENT_PROXY_RECORD& record) {
  std::memset(&record, 0, sizeof record);
  return Checked(AgentApi().KE_AGAPI_GetConfig(KE_AGENT_CONFIG_CLASS, KE_AGENT_PROXY_ITEM, &record, sizeof record),
                 KE_AGENT_READ_FAILED, kDetail, function, "reading the proxy configuration");
}

// Decrypts a setting text into `plain`.
KE_RESULT Decrypt(const char* function, const char* setting, char (&plain)[kSettingSize]) {
  const std::size_t length = strnlen(setting, kSettingSize);
  if (length == kSettingSize) {
    Trace(kDetail, function, "The setting text is longer than %u characters", unsigned{kSettingSize - 1});
    return KE_OUT_OF_RANGE;
  }
  std::memcpy(plain, setting, length + 1);
  return store::DecryptSetting(plain, kSettingSize);
}

KE_RESULT AddCredentials(const char* function, const ProxySettings& settings, KE_AGENT_PROXY_RECORD& record) {
  if (*settings.user == '\0') return KE_SUCCESS;
  char plain[kSettingSize] = {};
  const win::WipeAtEnd wipe(plain, sizeof plain);
  KE_RESULT result = Decrypt(function, settings.user, plain);
  if (result != KE_SUCCESS) return result;
  SetUser(record, plain);
  if (*settings.password == '\0') return KE_SUCCESS;
  result = Decrypt(function, settings.password, plain);
  if (result == KE_SUCCESS) SetPassword(record, plain);
  return result;
}

KE_RESULT AskInstallerPlugin(const char* function, KE_PROXY& proxy, std::uint32_t size) {
  return siblings::UsePlugin(siblings::kInstallerPlugin, function, &siblings::PluginTable::KEINSTALL_GetInetConfig,
                             [&](auto get) { return static_cast<KE_RESULT>(get(&proxy, size)); });
}

KE_RESULT AskAgent(const char* function, KE_PROXY& proxy) {
  const AgentApiScope agent(OpenAgent(function));
  if (agent.Result() != KE_SUCCESS) return agent.Result();
  KE_RESULT result =
      Checked(AgentApi().KE_AGAPI_AskProxyConfig(), KE_NOT_CREATED, kDetail, function, "asking for the proxy");
  if (result != KE_SUCCESS) return result;
  KE_AGENT_PROXY_RECORD record{};
  const win::WipeAtEnd wipe(&record, sizeof record);
  result = ReadProxyInUse(function, record);
  if (result != KE_SUCCESS) return result;
  ClearProxy(proxy);
  FillInternetProxy(record, proxy);
  return KE_SUCCESS;
}

}  // namespace

KE_RESULT SetAgentServer(const char* function, const char* server) {
  const AgentApiScope agent(siblings::OpenAgentApi());
  const siblings::AgentApiTable& api = AgentApi();
  if (agent.Result() != 0 || !api.KE_AGAPI_GetConfig || !api.KE_AGAPI_SetConfig) {
    siblings::TraceAgentNotLoaded(function, KE_AGENT_NOT_LOADED);
    return KE_AGENT_NOT_LOADED;
  }
  KE_AGENT_SERVER_RECORD record{};
  const KE_RESULT read =
      Checked(api.KE_AGAPI_GetConfig(KE_AGENT_CONFIG_CLASS, KE_AGENT_SERVER_ITEM, &record, sizeof record),
              KE_AGENT_READ_FAILED, kDetail, function, "reading the agent's configuration");
  if (read != KE_SUCCESS) return read;
  std::strncpy(record.server, server, sizeof record.server - 1);
  record.server[sizeof record.server - 1] = '\0';
  return Checked(api.KE_AGAPI_SetConfig(KE_AGENT_CONFIG_CLASS, KE_AGENT_SERVER_ITEM, &record, sizeof record),
                 KE_AGENT_WRITE_FAILED, kDetail, function, "writing the agent's configuration");
}

KE_RESULT GetConfiguredProxy(const char* function, KE_PROXY& proxy) {
  const AgentApiScope agent(OpenAgent(function));
  if (agent.Result() != KE_SUCCESS) return agent.Result();
  ClearProxy(proxy);
  KE_AGENT_PROXY_RECORD record{};
  const win::WipeAtEnd wipe(&record, sizeof record);
  KE_RESULT result = ReadProxyInUse(function, record);
  if (result == KE_SUCCESS && record.address[0] == '\0') result = ReadStoredProxy(function, record);
  if (result == KE_SUCCESS) FillConfiguredProxy(record, proxy);
  return result;
}

KE_RESULT SetAgentProxy(const char* function, const ProxySettings& settings) {
  const AgentApiScope agent(OpenAgent(function));
  if (agent.Result() != KE_SUCCESS) return agent.Result();
  KE_AGENT_PROXY_RECORD record = MakeProxyRecord(settings.server, settings.port);
  const win::WipeAtEnd wipe(&record, sizeof record);
  const KE_RESULT result = AddCredentials(function, settings, record);
  if (result != KE_SUCCESS) return result;
  return Checked(AgentApi().KE_AGAPI_SetConfig(KE_AGENT_CONFIG_CLASS, KE_AGENT_PROXY_ITEM, &record, sizeof record),
                 KE_REGISTRY_UNUSABLE, kAlways, function, "during proxy configuration");
}

KE_RESULT SetStaticProxy(const char* function, const char* host, const char* addresses) {
  const AgentApiScope agent(OpenAgent(function));
  if (agent.Result() != KE_SUCCESS) return agent.Result();
  KE_STATIC_PROXY_RECORD record = MakeStaticProxyRecord(host ? host : "", addresses ? addresses : "");
  return Checked(
      AgentApi().KE_AGAPI_SetConfig(KE_AGENT_CONFIG_CLASS, KE_AGENT_STATIC_PROXY_ITEM, &record, sizeof record),
      KE_AGENT_WRITE_FAILED, kAlways, function, "during StaticKeProxy configuration");
}

KE_RESULT GetInternetProxy(const char* function, KE_PROXY& proxy, std::uint32_t size) {
  const KE_RESULT result = AskInstallerPlugin(function, proxy, size);
  if (result != KE_INSTALLER_PLUGIN_UNUSABLE) return result;
  if (size < kProxyExtent) {
    Trace(kDetail, function, "The proxy description has only %u bytes", static_cast<unsigned>(size));
    return KE_BUFFER_TOO_SMALL;
  }
  return AskAgent(function, proxy);
}

}  // namespace agent
