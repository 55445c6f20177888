#include "services/agent_server.h"

#include <cstddef>
#include <cstring>
#include <string>

#include "frame/agent_api.h"
#include "frame/module.h"
#include "frame/paths.h"
#include "frame/trace.h"
#include "services/message_types.h"
#include "services/service_address.h"
#include "win/profile.h"

namespace services {
namespace {

static_assert(sizeof(KE_AGENT_SERVER_RECORD) == 2564 && offsetof(KE_AGENT_SERVER_RECORD, server) == 1028);

using frame::kDetail;
using frame::Trace;

}  // namespace

KE_RESULT SetAgentServer(const char* function, const char* server) {
  const frame::AgentApiScope agent(frame::OpenAgentApi());
  const frame::AgentApiTable& api = frame::AgentApi();
  if (agent.Result() != 0 || !api.KE_AGAPI_GetConfig || !api.KE_AGAPI_SetConfig) {
    frame::TraceAgentNotLoaded(function, KE_AGENT_NOT_LOADED);
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

KE_RESULT SetIntegrationServer(const char* server) {
  const auto directory = frame::KeptModuleDirectory();
  if (directory.empty()) return KE_NO_MODULE_DIRECTORY;
  const std::string file = frame::SiblingFolder(directory, "KESAgent") + "KE_AGPRX.dat";
  const std::string dispatcher =
      std::string(kServiceBaseAddress) + "/Orvane/Services/Agents/Facade/SecureMessageDispatcher";
  const std::string address = dispatcher + "/ISecureMessages";
  bool good = true;
  for (const char* section : {"IntegrationMessage", "IntegrationMessageInstall"}) {
    good &= win::WriteProfile(file, section, kServerKey, server);
    good &= win::WriteProfile(file, section, kNamespaceKey, dispatcher.c_str());
    good &= win::WriteProfile(file, section, kAddressKey, address.c_str());
  }
  return good ? KE_SUCCESS : KE_STORE_UNUSABLE;
}

}  // namespace services
