// The exports of server endpoints, message types and the start of an upgrade.
#include "KELUtils.h"
#include "frame/export_call.h"
#include "frame/text.h"
#include "services/agent_server.h"
#include "services/upgrade_start.h"

using frame::Export;
using frame::ExportCall;
using frame::IsBlank;

// Written out, with the same catch-all, because it is the one export that leaves no trace and does not load the trace
// library.
KE_RESULT KE_API KE_SetURLSecureServer(const char* server) {
  try {
    return services::SetIntegrationServer(server);
  } catch (...) {
    return KE_EXCEPTION;
  }
}

KE_RESULT KE_API KE_SetURLServer(const char* server) {
  return ExportCall(__func__, [&](Export& self) -> KE_RESULT {
    if (server == nullptr) return KE_MISSING_ARGUMENT;
    return services::SetAgentServer(self.name, server);
  });
}

KE_RESULT KE_API KE_UpgradeStart(const char* installDir) {
  return ExportCall(__func__, [&](Export&) -> KE_RESULT {
    if (IsBlank(installDir)) return KE_MISSING_ARGUMENT;
    return services::StartUpgrade(installDir);
  });
}
