#include "agent/communication.h"

#include <windows.h>

#include <cstddef>
#include <cstring>
#include <string>

#include "agent/proxy_records.h"
#include "siblings/modules.h"
#include "siblings/plugins.h"
#include "store/setting_codec.h"
#include "text/paths.h"
#include "trace/trace.h"
#include "win/module.h"
#include "win/owner.h"
#include "win/profile.h"

namespace agent {

namespace {

static_assert(sizeof(KE_AGENT_SERVER_RECORD) == 2564 && offsetof(KE_AGENT_SERVER_RECORD, server) == 1028);

using trace::kDetail;
using trace::Trace;

}  // namespace

KE_RESULT SetAgentServer(const char* function, const char* server) {
  const siblings::AgentApiScope agent(siblings::OpenAgentApi());
  const siblings::AgentApiTable& api = siblings::AgentApi();
  if (agent.Result() != KE_SUCCESS || !api.KE_AGAPI_GetConfig || !api.KE_AGAPI_SetConfig) {
    siblings::TraceAgentNotLoaded(function, KE_AGENT_NOT_LOADED);
    return KE_AGENT_NOT_LOADED;
  }
  KE_AGENT_SERVER_RECORD record{};
  const auto read = api.KE_AGAPI_GetConfig(KE_AGENT_CONFIG_CLASS, KE_AGENT_SERVER_ITEM, &record, sizeof record);
  if (read != 0) {
    Trace(kDetail, function, "Error reading the agent's configuration: [%d]", static_cast<int>(read));
    return KE_AGENT_READ_FAILED;
  }
  std::strncpy(record.server, server, sizeof record.server - 1);
  record.server[sizeof record.server - 1] = '\0';
  const auto written = api.KE_AGAPI_SetConfig(KE_AGENT_CONFIG_CLASS, KE_AGENT_SERVER_ITEM, &record, sizeof record);
  if (written != 0) {
    Trace(kDetail, function, "Error writing the agent's configuration: [%d]", static_cast<int>(written));
    return KE_AGENT_WRITE_FAILED;
  }
  return KE_SUCCESS;
}

namespace {

constexpr std::size_t kSettingSize = 1024;  // bytes, with the terminating zero; a longer setting text is not taken

using siblings::AgentApi;

KE_RESULT OpenAgent(const char* function) {
  const KE_RESULT result = siblings::CheckAgentProxyApi();
  if (result != KE_SUCCESS) siblings::TraceAgentNotLoaded(function, result);
  return result;
}

/// Reads the proxy in use into a cleared record.
KE_RESULT ReadProxyInUse(const char* function, KE_AGENT_PROXY_RECORD& record) {
  const std::uint32_t error = AgentApi().KE_AGAPI_GetProxyConfig(&record, sizeof record);
  if (error == 0) return KE_SUCCESS;
  Trace(trace::kDetail, function, "Error reading the proxy: [%d]", static_cast<int>(error));
  return KE_AGENT_READ_FAILED;
}

KE_RESULT ReadStoredProxy(const char* function, KE_AGENT_PROXY_RECORD& record) {
  std::memset(&record, 0, sizeof record);
  const std::uint32_t error =
      AgentApi().KE_AGAPI_GetConfig(KE_AGENT_CONFIG_CLASS, KE_AGENT_PROXY_ITEM, &record, sizeof record);
  if (error == 0) return KE_SUCCESS;
  Trace(trace::kDetail, function, "Error reading the proxy configuration: [%d]", static_cast<int>(error));
  return KE_AGENT_READ_FAILED;
}

/// Deciphers a setting text into `plain`.
KE_RESULT Decipher(const char* function, const char* setting, char (&plain)[kSettingSize]) {
  const std::size_t length = strnlen(setting, kSettingSize);
  if (length == kSettingSize) {
    Trace(trace::kDetail, function, "The setting text is longer than %u characters", unsigned{kSettingSize - 1});
    return KE_OUT_OF_RANGE;
  }
  std::memcpy(plain, setting, length + 1);
  return store::DecryptSetting(plain, kSettingSize);
}

KE_RESULT AddCredentials(const char* function, const ProxySettings& settings, KE_AGENT_PROXY_RECORD& record) {
  if (*settings.user == '\0') return KE_SUCCESS;
  char plain[kSettingSize] = {};
  const win::WipeAtEnd wipe(plain, sizeof plain);
  KE_RESULT result = Decipher(function, settings.user, plain);
  if (result != KE_SUCCESS) return result;
  SetUser(record, plain);
  if (*settings.password == '\0') return KE_SUCCESS;
  result = Decipher(function, settings.password, plain);
  if (result == KE_SUCCESS) SetPassword(record, plain);
  return result;
}

KE_RESULT AskInstallerPlugin(const char* function, KE_PROXY& proxy, std::uint32_t size) {
  return siblings::UsePlugin(siblings::kInstallerPlugin, function, &siblings::PluginTable::KEINSTALL_GetInetConfig,
                             [&](auto get) { return static_cast<KE_RESULT>(get(&proxy, size)); });
}

KE_RESULT AskAgent(const char* function, KE_PROXY& proxy) {
  const siblings::AgentApiScope agent(OpenAgent(function));
  if (agent.Result() != KE_SUCCESS) return agent.Result();
  const std::uint32_t error = AgentApi().KE_AGAPI_AskProxyConfig();
  if (error != 0) {
    Trace(trace::kDetail, function, "Error asking for the proxy: [%d]", static_cast<int>(error));
    return KE_NOT_CREATED;
  }
  KE_AGENT_PROXY_RECORD record{};
  const win::WipeAtEnd wipe(&record, sizeof record);
  const KE_RESULT result = ReadProxyInUse(function, record);
  if (result != KE_SUCCESS) return result;
  ClearProxy(proxy);
  FillInternetProxy(record, proxy);
  return KE_SUCCESS;
}

const char* OrEmpty(const char* text) noexcept { return text ? text : ""; }

}  // namespace

KE_RESULT GetConfiguredProxy(const char* function, KE_PROXY& proxy) {
  const siblings::AgentApiScope agent(OpenAgent(function));
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
  const siblings::AgentApiScope agent(OpenAgent(function));
  if (agent.Result() != KE_SUCCESS) return agent.Result();
  KE_AGENT_PROXY_RECORD record = MakeProxyRecord(settings.server, settings.port);
  const win::WipeAtEnd wipe(&record, sizeof record);
  const KE_RESULT result = AddCredentials(function, settings, record);
  if (result != KE_SUCCESS) return result;
  const std::uint32_t error =
      AgentApi().KE_AGAPI_SetConfig(KE_AGENT_CONFIG_CLASS, KE_AGENT_PROXY_ITEM, &record, sizeof record);
  if (error == 0) return KE_SUCCESS;
  Trace(trace::kAlways, function, "Error during proxy configuration: [%d]", static_cast<int>(error));
  return KE_REGISTRY_UNUSABLE;
}

KE_RESULT SetStaticProxy(const char* function, const char* host, const char* addresses) {
  const siblings::AgentApiScope agent(OpenAgent(function));
  if (agent.Result() != KE_SUCCESS) return agent.Result();
  KE_STATIC_PROXY_RECORD record = MakeStaticProxyRecord(OrEmpty(host), OrEmpty(addresses));
  const std::uint32_t error =
      AgentApi().KE_AGAPI_SetConfig(KE_AGENT_CONFIG_CLASS, KE_AGENT_STATIC_PROXY_ITEM, &record, sizeof record);
  if (error == 0) return KE_SUCCESS;
  Trace(trace::kAlways, function, "Error during StaticKeProxy configuration: [%d]", static_cast<int>(error));
  return KE_AGENT_WRITE_FAILED;
}

KE_RESULT GetInternetProxy(const char* function, KE_PROXY& proxy, std::uint32_t size) {
  const KE_RESULT result = AskInstallerPlugin(function, proxy, size);
  if (result != KE_INSTALLER_PLUGIN_UNUSABLE) return result;
  if (size < kProxyExtent) {
    Trace(trace::kDetail, function, "The proxy description has only %u bytes", static_cast<unsigned>(size));
    return KE_BUFFER_TOO_SMALL;
  }
  return AskAgent(function, proxy);
}

}  // namespace agent
